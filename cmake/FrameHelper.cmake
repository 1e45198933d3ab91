# The optional helper program sorvik-frame, which decodes video frames and raw pictures in a process of
# its own. The library searches it next to itself, as in a build tree, then in the folder for programs
# of libraries.
file(RELATIVE_PATH SORVIK_PROGRAMS_FROM_LIBRARY
    ${CMAKE_INSTALL_FULL_LIBDIR} ${CMAKE_INSTALL_FULL_LIBEXECDIR}/SorvikProvider)
set_source_files_properties(src/thumbnails/FrameHelper.cpp PROPERTIES
    COMPILE_DEFINITIONS SORVIK_INSTALLED_PROGRAMS="${SORVIK_PROGRAMS_FROM_LIBRARY}")

pkg_check_modules(FFMPEG IMPORTED_TARGET libavformat libavcodec libswscale libavutil)
pkg_check_modules(LIBRAW IMPORTED_TARGET libraw)
pkg_check_modules(HEIF IMPORTED_TARGET libheif)
pkg_check_modules(SECCOMP IMPORTED_TARGET libseccomp)
if(NOT FFMPEG_FOUND OR NOT LIBRAW_FOUND OR NOT HEIF_FOUND OR NOT SECCOMP_FOUND)
  message(STATUS "sorvik-frame is left out: it needs libavformat, libavcodec, libswscale, libraw, "
      "libheif and libseccomp. Clips without a picture of the camera then show an icon")
  return()
endif()

file(GLOB SORVIK_FRAME_SOURCES CONFIGURE_DEPENDS helper/*.cpp)
add_executable(sorvik-frame ${SORVIK_FRAME_SOURCES})
target_include_directories(sorvik-frame PRIVATE helper src)
target_link_libraries(sorvik-frame PRIVATE
    sorvik_build_settings PkgConfig::FFMPEG PkgConfig::LIBRAW PkgConfig::HEIF PkgConfig::SECCOMP)
set_target_properties(sorvik-frame PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
harden(sorvik-frame)
install(TARGETS sorvik-frame
    RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/SorvikProvider COMPONENT frame)
