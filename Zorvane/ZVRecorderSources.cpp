// The lists of sources under their former names.
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane {

ZVDisplay::List ZVRecorder::getDisplays() {
    return ZVDisplay::displays();
}

ZVCamera::List ZVRecorder::getCameras() {
    return ZVCamera::cameras();
}

ZVMicrophone::List ZVRecorder::getMicrophones() {
    return ZVMicrophone::microphones();
}

ZVTask<ZVAppleDevice::List> ZVRecorder::getAppleDevices() {
    return ZVAppleDevice::appleDevices();
}

ZVWindow::List ZVRecorder::getWindows(ZVWindow::FilterOptions options) {
    return ZVWindow::windows(options);
}

ZVRunningApplication::List ZVRecorder::getApplications() {
    return ZVRunningApplication::applications();
}

}  // namespace zorvane
