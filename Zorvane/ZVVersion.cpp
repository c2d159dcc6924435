#include "Zorvane/ZVVersion.hpp"

// Both values come from the project's version in CMakeLists.txt.
const double ZorvaneVersionNumber = ZORVANE_VERSION_MAJOR + ZORVANE_VERSION_MINOR / 100.0;
const char ZorvaneVersionString[] = ZORVANE_VERSION;
