#include "Zorvane/Internal/Recorders/DeviceRecorderExpansion.hpp"

#include <memory>

#include "Zorvane/Internal/Recorders/DeviceRecorder.hpp"
#include "Zorvane/Internal/Recorders/MovieFileRecorder.hpp"

namespace zorvane {

Task<Recorders> createRecorders(WebcamSchemaItem item, RecorderContext context) {
    const OutputDescription output = context.claimOutput(item.outputOptions.form(), fallbackFilename(item));
    Recorders recorders;
    recorders.push_back(
        std::make_shared<MovieFileRecorder>(item.id, output, item.microphoneID, item.cameraID, context));
    co_return recorders;
}

Task<Recorders> createRecorders(AppleDeviceStaticOrientationItem item, RecorderContext context) {
    const OutputDescription output = context.claimOutput(item.outputOptions.form(), fallbackFilename(item));
    Recorders recorders;
    recorders.push_back(std::make_shared<DeviceRecorder>(item.id, output, item.deviceID, context));
    co_return recorders;
}

}  // namespace zorvane
