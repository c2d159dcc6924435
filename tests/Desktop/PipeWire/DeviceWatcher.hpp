// Waits for what a discovery session tells.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

/// A wait that takes longer hangs. How soon changes are told is measured elsewhere.
inline constexpr std::chrono::seconds patience{30};

/// All devices of one media type, as an observer sees them.
class DeviceWatcher {
  public:
    using Devices = std::vector<std::shared_ptr<AVCaptureDevice>>;

    DeviceWatcher(AVCaptureDevices& devices, AVMediaType mediaType)
        : session_(devices.makeDiscoverySession(
              {AVCaptureDeviceType::builtInMicrophone, AVCaptureDeviceType::builtInWideAngleCamera,
               AVCaptureDeviceType::external, AVCaptureDeviceType::externalUnknown},
              mediaType)),
          listObservation_(session_->observeDevices([this](auto kind) {
              using enum AVCaptureDeviceDiscoverySession::ChangeKind;
              signal(kind == initial ? initialSignals_ : listSignals_);
          })) {}

    Devices devices() const { return session_->devices(); }

    /// Null if it isn't listed.
    std::shared_ptr<AVCaptureDevice> find(const std::string& uniqueID) const {
        for (auto& device : devices()) {
            if (device->uniqueID() == uniqueID) {
                return device;
            }
        }
        return nullptr;
    }

    std::vector<std::string> ids() const {
        std::vector<std::string> ids;
        for (const auto& device : devices()) {
            ids.push_back(device->uniqueID());
        }
        return ids;
    }

    /// Looks after each signal, and only then, until `condition` holds. False if it never does.
    bool waitUntil(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        std::unique_lock lock(mutex_);
        while (true) {
            const int seen = signals();
            lock.unlock();
            const bool isMet = condition();
            lock.lock();
            if (isMet || !changed_.wait_until(lock, deadline, [&] { return signals() != seen; })) {
                return isMet;
            }
        }
    }
    bool waitUntilListed(const std::string& uniqueID) {
        return waitUntil([&] { return find(uniqueID) != nullptr; });
    }
    bool waitUntilGone(const std::string& uniqueID) {
        return waitUntil([&] { return find(uniqueID) == nullptr; });
    }

    void observe(AVCaptureDevice& device) {
        suspendedObservations_.push_back(device.observeSuspended([this] { signal(suspendedSignals_); }));
    }

    int initialSignals() const {
        const std::lock_guard lock(mutex_);
        return initialSignals_;
    }
    int suspendedSignals() const {
        const std::lock_guard lock(mutex_);
        return suspendedSignals_;
    }

  private:
    void signal(int& count) {
        const std::lock_guard lock(mutex_);
        ++count;
        changed_.notify_all();
    }
    int signals() const { return listSignals_ + suspendedSignals_; }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int initialSignals_ = 0;
    int listSignals_ = 0;
    int suspendedSignals_ = 0;
    std::shared_ptr<AVCaptureDeviceDiscoverySession> session_;
    NSKeyValueObservation listObservation_;
    std::vector<NSKeyValueObservation> suspendedObservations_;
};

}  // namespace zorvane
