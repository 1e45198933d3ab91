# One test program FOLDER_tests for each folder in tests/. The tests of the folders in
# SORVIK_THREAD_TESTS get the label "threads", which the preset tsan selects.
find_package(GTest REQUIRED)
include(GoogleTest)
set(SORVIK_THREAD_TESTS c foundation frame host robustness thumbnails)

file(GLOB SORVIK_TEST_SUPPORT CONFIGURE_DEPENDS tests/support/*.cpp)
add_library(sorvik_test_support OBJECT ${SORVIK_TEST_SUPPORT})
target_link_libraries(sorvik_test_support PUBLIC GTest::gmock GTest::gtest)
target_link_libraries(sorvik_test_support PUBLIC sorvik_objects)
# Tests are compiled far more often than they run: without optimization they build in half the time.
target_compile_options(sorvik_test_support PUBLIC $<$<CONFIG:Release>:-O0>)
target_include_directories(sorvik_test_support PUBLIC tests)
target_compile_definitions(sorvik_test_support PUBLIC
    SORVIK_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/../shared/samples"
    SORVIK_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    SORVIK_BINARY_DIR="${PROJECT_BINARY_DIR}")

# A network share for tests, without which those that need one are skipped.
find_package(PkgConfig REQUIRED)
pkg_check_modules(FUSE3 IMPORTED_TARGET fuse3)
if(FUSE3_FOUND)
  add_executable(sorvik-test-share tests/support/fuse/share.cpp)
  target_link_libraries(sorvik-test-share PRIVATE PkgConfig::FUSE3)
  add_dependencies(sorvik_test_support sorvik-test-share)
  target_compile_definitions(sorvik_test_support PUBLIC
      SORVIK_TEST_SHARE="$<TARGET_FILE:sorvik-test-share>")
endif()

# Cards for tests in other languages.
add_executable(sorvik-test-cards tests/support/cards/main.cpp)
target_link_libraries(sorvik-test-cards PRIVATE sorvik_test_support sorvik_objects)

if(TARGET sorvik_python)
  # With the interpreter that the module was built for.
  file(GLOB python_tests CONFIGURE_DEPENDS python/tests/test_*.py)
  foreach(source ${python_tests})
    get_filename_component(area ${source} NAME_WE)
    string(REPLACE "test_" "" area ${area})
    add_test(NAME python.${area}
        COMMAND ${SORVIK_PYTHON} -m pytest -q -p no:cacheprovider ${source})
    set_tests_properties(python.${area} PROPERTIES LABELS python TIMEOUT 300
        ENVIRONMENT "PYTHONPATH=${SORVIK_PYTHON_FOLDER};PYTHONDONTWRITEBYTECODE=1;LC_ALL=C.UTF-8;LANGUAGE=;SORVIK_BINARY_DIR=${PROJECT_BINARY_DIR};SORVIK_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  endforeach()
endif()

file(GLOB SORVIK_TEST_FOLDERS CONFIGURE_DEPENDS LIST_DIRECTORIES true tests/*)
foreach(folder ${SORVIK_TEST_FOLDERS})
  get_filename_component(area ${folder} NAME)
  if(NOT IS_DIRECTORY ${folder} OR area STREQUAL "support" OR area STREQUAL "data")
    continue()
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${folder}/*Test.cpp)
  if(NOT sources)
    continue()
  endif()
  add_executable(${area}_tests ${sources})
  target_link_libraries(${area}_tests PRIVATE
      sorvik_test_support sorvik_objects GTest::gtest_main)
  if(area STREQUAL "host")
    target_link_libraries(${area}_tests PRIVATE sorvik_host nlohmann_json::nlohmann_json)
  endif()
  if(area STREQUAL "c")
    # Compiled as C11, to prove that the header needs no extension and no other header.
    add_library(sorvik_c_caller OBJECT tests/c/CountEntries.c)
    target_include_directories(sorvik_c_caller PRIVATE include)
    set_target_properties(sorvik_c_caller PROPERTIES C_STANDARD 11 C_EXTENSIONS OFF)
    target_compile_options(sorvik_c_caller PRIVATE
        -pedantic-errors -Wall -Wextra -Wstrict-prototypes -Werror)
    target_link_libraries(c_tests PRIVATE sorvik_c_caller)
  endif()
  foreach(program sorvik sorvik-frame)
    if(TARGET ${program})
      add_dependencies(${area}_tests ${program})
    endif()
  endforeach()
  gtest_discover_tests(${area}_tests
      TEST_PREFIX ${area}. DISCOVERY_TIMEOUT 60 NO_PRETTY_VALUES TEST_LIST ${area}_TEST_NAMES
      PROPERTIES LABELS ${area} TIMEOUT 120)
  if(area IN_LIST SORVIK_THREAD_TESTS)
    # gtest_discover_tests can't set a list of labels, so the second one is set after discovery.
    file(WRITE ${PROJECT_BINARY_DIR}/${area}_labels.cmake
        "foreach(test IN LISTS ${area}_TEST_NAMES)
  set_tests_properties(\${test} PROPERTIES LABELS \"${area};threads\")
endforeach()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES
        ${PROJECT_BINARY_DIR}/${area}_labels.cmake)
  endif()
endforeach()

file(GLOB SORVIK_TEST_SCRIPTS CONFIGURE_DEPENDS tests/scripts/*.sh)
foreach(script ${SORVIK_TEST_SCRIPTS})
  get_filename_component(name ${script} NAME_WE)
  add_test(NAME scripts.${name}
      COMMAND bash ${script} ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR})
  set_tests_properties(scripts.${name} PROPERTIES
      LABELS scripts TIMEOUT 300 SKIP_RETURN_CODE 77)
endforeach()
set_tests_properties(scripts.Packages PROPERTIES TIMEOUT 900)  # with SORVIK_TEST_TREE=1
