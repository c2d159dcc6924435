// The desktop's service for phones: which are attached, and which of them have trusted this machine.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zorvane {

/// A phone as the service tells of it.
struct AttachedPhone {
    enum class Attachment : std::uint8_t { cable, network };

    std::uint32_t deviceID = 0;  ///< the service's number for this attachment
    std::string udid;            ///< the phone's own, for good
    Attachment attachment = Attachment::cable;
};

/// Tells of phones for as long as it lives. Where the service isn't running, or has stopped, there are no phones. From
/// the first subscription on, a thread of the process listens to the service, or looks for it once a second. Any
/// thread.
class PhoneSubscription {
  public:
    enum class Event : std::uint8_t { attached, detached, paired };
    /// Called under a lock that every subscription needs, so it only hands on.
    using Handler = std::function<void(Event event, const AttachedPhone& phone)>;

    /// `handler` is told of the phones that are there, and of each change.
    explicit PhoneSubscription(Handler handler);
    /// After it the handler isn't called.
    ~PhoneSubscription();
    PhoneSubscription(const PhoneSubscription&) = delete;
    PhoneSubscription& operator=(const PhoneSubscription&) = delete;

  private:
    const Handler handler_;
};

/// The phones that are attached now; none if the service isn't there. Waits for the service, five seconds at most.
std::vector<AttachedPhone> listPhones();

/// The name under which this machine is known to a phone that has trusted it; nothing if it never has. Waits for the
/// service, five seconds at most.
std::optional<std::string> readHostID(const std::string& udid);

}  // namespace zorvane
