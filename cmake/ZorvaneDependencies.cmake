# Everything the library links or builds with. All of it comes from the distribution's packages.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
pkg_check_modules(ffmpeg REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
pkg_check_modules(xcb REQUIRED IMPORTED_TARGET
  xcb xcb-shm xcb-damage xcb-randr xcb-xfixes xcb-composite xcb-render)
pkg_check_modules(systemd REQUIRED IMPORTED_TARGET libsystemd)
find_path(YUV_INCLUDE_DIR libyuv.h REQUIRED)
find_library(YUV_LIBRARY yuv REQUIRED)
