# Installs library, headers, CMake package, pkg-config file, program and completions. Resources.cmake
# installs the pictures and translations, Packages.cmake the man page.
include(CMakePackageConfigHelpers)

install(TARGETS SorvikProvider EXPORT SorvikProviderTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS sorvik_xerces
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/SorvikProvider COMPONENT library)
install(DIRECTORY include/SorvikProvider
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT SorvikProviderTargets NAMESPACE SorvikProvider::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/SorvikProvider COMPONENT development)

configure_package_config_file(
    cmake/package/SorvikProviderConfig.cmake.in SorvikProviderConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/SorvikProvider)
write_basic_package_version_file(SorvikProviderConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
# The prefix can differ at install or packaging time, so the file uses paths relative to itself.
foreach(folder PREFIX FULL_LIBDIR FULL_INCLUDEDIR)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_${folder}
      BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE from_pc)
  string(REPLACE FULL_ "" name ${folder})
  set(SORVIK_PC_${name} "\${pcfiledir}/${from_pc}")
endforeach()
configure_file(cmake/package/SorvikProvider.pc.in SorvikProvider.pc @ONLY)
install(FILES
    ${PROJECT_BINARY_DIR}/SorvikProviderConfig.cmake
    ${PROJECT_BINARY_DIR}/SorvikProviderConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/SorvikProvider COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/SorvikProvider.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET sorvik)
  install(TARGETS sorvik RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
endif()
if(EXISTS ${PROJECT_SOURCE_DIR}/host/completion/sorvik.bash)
  install(FILES host/completion/sorvik.bash RENAME sorvik
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES host/completion/_sorvik
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)
  install(FILES host/completion/sorvik.fish
      DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
endif()
