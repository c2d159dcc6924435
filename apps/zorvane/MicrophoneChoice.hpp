// Which microphone to record.
#pragma once

#include <stop_token>
#include <string>

namespace zorvane::cli {

/// The id of the microphone that the user asked for, also if it is known but not available; with "default", of the one
/// that was recorded last, else of the system's main one. Throws a `std::exception`, with a text for the user that
/// lists the known microphones, if there is no such one. Gives up when stop is requested.
std::string chooseMicrophone(const std::string& wanted, std::stop_token stopToken);

}  // namespace zorvane::cli
