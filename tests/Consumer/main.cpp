// A host as it stands outside this repository: it has the installed headers and library, and nothing else.
#include <Zorvane/Zorvane.hpp>

#include <cstdio>
#include <cstring>

int main() {
    if (std::strcmp(ZorvaneVersionString, EXPECTED_VERSION) != 0) {
        std::fprintf(stderr, "built against %s, runs with %s\n", EXPECTED_VERSION, ZorvaneVersionString);
        return 1;
    }
    return 0;
}
