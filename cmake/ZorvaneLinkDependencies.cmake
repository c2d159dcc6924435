# Libraries that are linked into the library and never show in its headers: pkg-config modules, by backend.
set(zorvane_ffmpeg_modules libavformat libavcodec libavutil libswresample)
set(zorvane_xcb_modules xcb xcb-shm xcb-damage xcb-randr xcb-record xcb-xfixes xcb-xinput xcb-xkb xcb-composite xcb-render
                        xcb-shape xcb-res xcursor xkbcommon xkbcommon-x11)
set(zorvane_systemd_modules libsystemd)
set(zorvane_pipewire_modules libpipewire-0.3)
set(zorvane_phone_modules libimobiledevice-1.0 libusbmuxd-2.0 libplist-2.0)

find_package(PkgConfig REQUIRED)
find_package(fmt REQUIRED)
pkg_check_modules(ffmpeg REQUIRED IMPORTED_TARGET ${zorvane_ffmpeg_modules})
pkg_check_modules(xcb REQUIRED IMPORTED_TARGET ${zorvane_xcb_modules})
pkg_check_modules(systemd REQUIRED IMPORTED_TARGET ${zorvane_systemd_modules})
pkg_check_modules(pipewire REQUIRED IMPORTED_TARGET ${zorvane_pipewire_modules})
pkg_check_modules(phone REQUIRED IMPORTED_TARGET ${zorvane_phone_modules})
