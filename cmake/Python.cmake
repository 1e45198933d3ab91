# The Python package sorvik for Debian's Python: the sources in python/sorvik, and the extension module
# _core over the C interface. In the build tree it is complete in the folder python, for PYTHONPATH.
find_program(SORVIK_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
set(Python3_EXECUTABLE ${SORVIK_PYTHON})
find_package(Python3 REQUIRED COMPONENTS Interpreter Development.Module)
# Of pybind11 only the headers are used.
set(PYBIND11_NOPYTHON ON)
find_package(pybind11 REQUIRED)
set(SORVIK_PYTHON_FOLDER ${PROJECT_BINARY_DIR}/python)

Python3_add_library(sorvik_python MODULE WITH_SOABI python/core.cpp)
target_link_libraries(sorvik_python PRIVATE
    sorvik_build_settings pybind11::headers SorvikProvider)
set_target_properties(sorvik_python PROPERTIES
    OUTPUT_NAME _core
    LIBRARY_OUTPUT_DIRECTORY ${SORVIK_PYTHON_FOLDER}/sorvik)
harden(sorvik_python)

file(GLOB sources CONFIGURE_DEPENDS python/sorvik/*.py python/sorvik/*.pyi python/sorvik/py.typed)
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/python.stamp
    COMMAND ${CMAKE_COMMAND} -E copy ${sources} ${SORVIK_PYTHON_FOLDER}/sorvik
    COMMAND ${CMAKE_COMMAND} -E touch ${PROJECT_BINARY_DIR}/python.stamp
    DEPENDS ${sources} COMMENT "Copying the Python package" VERBATIM)
add_custom_target(sorvik_python_sources ALL DEPENDS ${PROJECT_BINARY_DIR}/python.stamp)
add_dependencies(sorvik_python sorvik_python_sources)

# Where Debian's python3 looks: /usr/lib/python3/dist-packages for packages, dist-packages of the version
# in /usr/local, and site-packages in the home of a user. The prefix is known when it is installed.
install(CODE "
  if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/local/?$\")
    set(SORVIK_PYTHON_INSTALL lib/python${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}/dist-packages/sorvik)
  elseif(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?$\")
    set(SORVIK_PYTHON_INSTALL lib/python3/dist-packages/sorvik)
  else()
    set(SORVIK_PYTHON_INSTALL lib/python${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}/site-packages/sorvik)
  endif()" COMPONENT python)
# The same RPATH for build tree and installation, as for the program.
set_target_properties(sorvik_python PROPERTIES
    INSTALL_RPATH "$ORIGIN/../../../../${CMAKE_INSTALL_LIBDIR};$ORIGIN/../.."
    BUILD_WITH_INSTALL_RPATH ON)
install(TARGETS sorvik_python
    LIBRARY DESTINATION "\${SORVIK_PYTHON_INSTALL}" COMPONENT python)
install(FILES ${sources} DESTINATION "\${SORVIK_PYTHON_INSTALL}" COMPONENT python)
