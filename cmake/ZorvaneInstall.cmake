# An installed tree: public headers under their own path, the library, and what find_package and pkg-config read.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(zorvane_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Zorvane")

install(TARGETS zorvane EXPORT ZorvaneTargets FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT ZorvaneTargets NAMESPACE Zorvane:: DESTINATION "${zorvane_cmake_dir}")

configure_package_config_file(cmake/ZorvaneConfig.cmake.in ZorvaneConfig.cmake INSTALL_DESTINATION "${zorvane_cmake_dir}")
# Before 1.0 a minor release may change the interface.
write_basic_package_version_file(ZorvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/ZorvaneConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/ZorvaneConfigVersion.cmake"
  DESTINATION "${zorvane_cmake_dir}")

file(RELATIVE_PATH zorvane_pc_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
cmake_path(APPEND zorvane_pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
cmake_path(APPEND zorvane_pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
if(NOT BUILD_SHARED_LIBS)
  install(FILES cmake/ZorvaneLinkDependencies.cmake DESTINATION "${zorvane_cmake_dir}")
  set(zorvane_pc_requires fmt ${zorvane_ffmpeg_modules} ${zorvane_xcb_modules} ${zorvane_systemd_modules}
      ${zorvane_phone_modules} ${zorvane_pipewire_modules})
  list(JOIN zorvane_pc_requires " " zorvane_pc_requires)
  set(zorvane_pc_libs "-lyuv -lunistring -lstdc++ -pthread")
endif()
configure_file(cmake/zorvane.pc.in zorvane.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zorvane.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

if(TARGET zorvane_cli)
  file(RELATIVE_PATH zorvane_lib_from_bin "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(zorvane_cli PROPERTIES INSTALL_RPATH "$ORIGIN/${zorvane_lib_from_bin}")
  install(TARGETS zorvane_cli)
  install(FILES docs/man/zorvane.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  install(FILES apps/zorvane/completions/zorvane.bash RENAME zorvane
          DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  install(FILES apps/zorvane/completions/_zorvane DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
  install(FILES apps/zorvane/completions/zorvane.fish
          DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
endif()
install(FILES LICENSE README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
