// Lists the clicks of a recording, as an editor does that zooms to them.
//
//     zorvane record --mouse --seconds 10 -o talk.zorvane
//     list_clicks talk.zorvane/display-1.input-events.json 1920 1080
//
// The numbers are the size of the picture, in pixels.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "Zorvane/Zorvane.hpp"

int main(int count, char** arguments) {
    using namespace zorvane;
    if (count != 4) {
        std::fprintf(stderr, "usage: %s SIDE_FILE WIDTH HEIGHT\n", arguments[0]);
        return EXIT_FAILURE;
    }
    const double width = std::atof(arguments[2]);
    const double height = std::atof(arguments[3]);
    try {
        for (const ZVInputEvent& event : ZVInputEvent::read(arguments[1])) {
            const auto* mouse = std::get_if<ZVMouseEvent>(&event.payload());
            if (mouse && mouse->mouseEventType == ZVMouseEventType::down) {
                std::printf("%8.3f s  %4.0f, %4.0f\n", mouse->time.seconds(), mouse->x * width, mouse->y * height);
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
