// Upper case beyond ASCII.
#pragma once

#include <string>
#include <string_view>

namespace zorvane {

/// The text in upper case by the rules that Unicode has for all languages, whatever the locale: "straße" becomes
/// "STRASSE". What has no upper case stays. Takes valid UTF-8.
std::string uppercased(std::string_view text);

}  // namespace zorvane
