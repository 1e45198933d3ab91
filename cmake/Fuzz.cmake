# fuzz/<Unit>Fuzzer.cpp is a libFuzzer target. Without SORVIK_FUZZ the same file is linked with a main
# that replays fuzz/corpus/<Unit>/ as a test.
file(GLOB SORVIK_FUZZERS CONFIGURE_DEPENDS fuzz/*Fuzzer.cpp)
foreach(source ${SORVIK_FUZZERS})
  get_filename_component(name ${source} NAME_WE)
  string(REPLACE "Fuzzer" "" unit ${name})
  if(SORVIK_FUZZ)
    add_executable(${name} ${source})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  else()
    add_executable(${name} ${source} fuzz/ReplayMain.cpp)
    add_test(NAME fuzz.${unit}
        COMMAND ${name} ${PROJECT_SOURCE_DIR}/fuzz/corpus/${unit})
    set_tests_properties(fuzz.${unit} PROPERTIES LABELS fuzz TIMEOUT 120)
  endif()
  target_link_libraries(${name} PRIVATE sorvik_objects)
endforeach()
