// Waking a thread that waits for file descriptors.
#pragma once

namespace zorvane {

/// Rings from any thread until it is silenced.
class Alarm {
  public:
    Alarm();
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm();

    /// Readable while it rings.
    int descriptor() const { return descriptor_; }
    void ring();
    void silence();

  private:
    const int descriptor_;
};

}  // namespace zorvane
