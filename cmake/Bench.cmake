# bench/*Bench.cpp: one program each.
find_package(benchmark REQUIRED)
file(GLOB SORVIK_BENCHES CONFIGURE_DEPENDS bench/*Bench.cpp)
file(GLOB SORVIK_BENCH_SUPPORT CONFIGURE_DEPENDS tests/support/*.cpp)
add_library(sorvik_bench_support OBJECT ${SORVIK_BENCH_SUPPORT})
target_link_libraries(sorvik_bench_support PUBLIC sorvik_objects)
target_include_directories(sorvik_bench_support PUBLIC tests bench)
target_compile_definitions(sorvik_bench_support PUBLIC
    SORVIK_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/../shared/samples"
    SORVIK_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    SORVIK_BINARY_DIR="${PROJECT_BINARY_DIR}")
# Benchmarks of slow and dead shares mount one.
if(TARGET sorvik-test-share)
  add_dependencies(sorvik_bench_support sorvik-test-share)
  target_compile_definitions(sorvik_bench_support PUBLIC
      SORVIK_TEST_SHARE="$<TARGET_FILE:sorvik-test-share>")
endif()
foreach(source ${SORVIK_BENCHES})
  get_filename_component(name ${source} NAME_WE)
  add_executable(${name} ${source})
  target_link_libraries(${name} PRIVATE
      sorvik_bench_support sorvik_objects sorvik_host benchmark::benchmark)
endforeach()
