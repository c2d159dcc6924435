#include "Zorvane/ZVInputEvent.hpp"

#include "FuzzTarget.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zorvane::fuzz::readAndWrite<zorvane::ZVInputEvent>(zorvane::fuzz::asText(data, size));
    return 0;
}
