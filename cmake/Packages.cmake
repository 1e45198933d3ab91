# Debian packages by CPack: libsorvikprovider2, libsorvikprovider-dev, sorvik, python3-sorvik and
# sorvik-frame. The preset "package"
# installs to /usr, so that libraries go to the multiarch folder.
set(SORVIK_PACKAGE_FILES ${PROJECT_SOURCE_DIR}/cmake/package)
set(library libsorvikprovider${PROJECT_VERSION_MAJOR})
find_program(SORVIK_GZIP gzip REQUIRED)

# compressed(SOURCE TARGET): compresses a file at build time, without a time stamp.
function(compressed source target)
  add_custom_command(OUTPUT ${target}
      COMMAND sh -c "exec '${SORVIK_GZIP}' -9nc '${source}' > '${target}'"
      DEPENDS ${source} VERBATIM)
endfunction()
compressed(${PROJECT_SOURCE_DIR}/docs/sorvik.1 ${PROJECT_BINARY_DIR}/sorvik.1.gz)
compressed(${SORVIK_PACKAGE_FILES}/changelog ${PROJECT_BINARY_DIR}/changelog.gz)
add_custom_target(sorvik_documents ALL
    DEPENDS ${PROJECT_BINARY_DIR}/sorvik.1.gz ${PROJECT_BINARY_DIR}/changelog.gz)

install(FILES ${PROJECT_BINARY_DIR}/sorvik.1.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
set(components library development program)
set(packages ${library} libsorvikprovider-dev sorvik)
if(TARGET sorvik_python)
  list(APPEND components python)
  list(APPEND packages python3-sorvik)
endif()
if(TARGET sorvik-frame)
  list(APPEND components frame)
  list(APPEND packages sorvik-frame)
endif()
foreach(component package IN ZIP_LISTS components packages)
  install(FILES ${SORVIK_PACKAGE_FILES}/copyright ${PROJECT_BINARY_DIR}/changelog.gz
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

# The list of exported symbols, for the dependencies of programs that use the library.
find_program(SORVIK_GENSYMBOLS dpkg-gensymbols)
if(SORVIK_GENSYMBOLS)
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/debian/symbols
      COMMAND sh ${SORVIK_PACKAGE_FILES}/symbols.sh ${SORVIK_GENSYMBOLS} ${library}
          ${PROJECT_VERSION} $<TARGET_FILE:SorvikProvider> ${PROJECT_BINARY_DIR}/debian
      DEPENDS SorvikProvider ${SORVIK_PACKAGE_FILES}/symbols.sh VERBATIM)
  add_custom_target(sorvik_symbols ALL DEPENDS ${PROJECT_BINARY_DIR}/debian/symbols)
endif()
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sorvikprovider)
set(CPACK_PACKAGE_VENDOR "the SorvikProvider authors")
set(CPACK_PACKAGE_CONTACT "SorvikProvider authors <authors@sorvikprovider.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "list camera cards and folders as clips")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${SORVIK_PACKAGE_FILES}/RequirePrograms.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "shared-mime-info")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "adwaita-icon-theme, sorvik-frame (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "list camera cards and folders as clips - library
 Given a path, the library detects which camera wrote the card, and returns
 each clip with its metadata, its files and a thumbnail.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
if(SORVIK_GENSYMBOLS)
  list(APPEND CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/symbols)
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libsorvikprovider-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${library} (= ${PROJECT_VERSION}), libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "list camera cards and folders as clips - development
 Headers, CMake package and pkg-config file of the library.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME sorvik)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "list camera cards and folders as clips - program
 The program lists the clips of a card, their files and metadata, checks
 whether a card is complete, and writes contact sheets.")

if(TARGET sorvik_python)
  # The extension module works with one minor version of Python.
  math(EXPR next_minor "${Python3_VERSION_MINOR} + 1")
  set(python_version "${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-sorvik)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION}), \
python3 (>= ${python_version}), python3 (<< ${Python3_VERSION_MAJOR}.${next_minor})")
  # Compiles the modules, and removes the compiled files.
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
      ${SORVIK_PACKAGE_FILES}/python/postinst ${SORVIK_PACKAGE_FILES}/python/prerm)
  # Lists that join files are written by the program.
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "sorvik (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_PYTHON_DESCRIPTION "list camera cards and folders as clips - Python
 The package sorvik lists the clips of a card with their files, metadata and
 pictures, checks whether a card is complete, and searches for cards.")
endif()

# A package of its own: the library works without it, and it depends on more than a hundred others.
set(CPACK_DEBIAN_FRAME_PACKAGE_NAME sorvik-frame)
set(CPACK_DEBIAN_FRAME_PACKAGE_SECTION video)
set(CPACK_DEBIAN_FRAME_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_FRAME_DESCRIPTION "list camera cards and folders as clips - video frames
 The library runs this helper program to decode pictures of video clips and raw
 frames in a separate process.")
include(CPack)
