// Which microphone, camera or phone to record.
#pragma once

#include <stop_token>
#include <string>

namespace zorvane::cli {

// Each gives the id of the device that the user asked for, also if it is known but not available; with "default", of
// the one that was recorded last, else of the system's main one. They throw a `std::exception`, with a text for the
// user that lists the known devices, if there is no such one, and give up when stop is requested.

std::string chooseMicrophone(const std::string& wanted, std::stop_token stopToken);
std::string chooseCamera(const std::string& wanted, std::stop_token stopToken);
/// A phone or tablet, or what shows its screen. There is no default one.
std::string chooseDevice(const std::string& wanted, std::stop_token stopToken);

}  // namespace zorvane::cli
