# Everything the library builds with and links. All of it comes from the distribution's packages. Users of an installed
# static library include ZorvaneLinkDependencies too, and nothing else of this.
find_package(Threads REQUIRED)
find_package(nlohmann_json REQUIRED)
find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
find_path(YUV_INCLUDE_DIR libyuv.h REQUIRED)
find_library(YUV_LIBRARY yuv REQUIRED)
find_path(UNISTRING_INCLUDE_DIR unicase.h REQUIRED)
find_library(UNISTRING_LIBRARY unistring REQUIRED)
include(ZorvaneLinkDependencies)
