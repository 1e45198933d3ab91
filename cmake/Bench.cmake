# bench/*Bench.cpp: each its own program, so that one can be run alone.
find_package(benchmark REQUIRED)
file(GLOB SORVIK_BENCHES CONFIGURE_DEPENDS bench/*Bench.cpp)
foreach(source ${SORVIK_BENCHES})
  get_filename_component(name ${source} NAME_WE)
  add_executable(${name} ${source})
  target_link_libraries(${name} PRIVATE sorvik_objects benchmark::benchmark)
  target_include_directories(${name} PRIVATE tests bench)
endforeach()
