/// The version of the library a program runs with, as opposed to the one whose headers it was compiled with.
#pragma once

extern "C" {

/// Major version plus a hundredth of the minor one: 1.12 for every 1.12.x, so that a later release compares greater.
extern const double ZorvaneVersionNumber;

/// "major.minor.patch", zero-terminated.
extern const char ZorvaneVersionString[];
}
