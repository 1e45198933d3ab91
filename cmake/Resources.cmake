# Builds the folder resources/ next to the library: copied pictures and compiled translations. The
# library finds it there in a build tree, and in the data folder when installed.
find_program(SORVIK_MSGFMT msgfmt REQUIRED)
set(SORVIK_RESOURCES ${PROJECT_BINARY_DIR}/resources)
set(SORVIK_PICTURE_FOLDERS PNG icons pictures templates)

set(copy_folders)
set(pictures)
foreach(folder ${SORVIK_PICTURE_FOLDERS})
  file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/resources/${folder}/*.png)
  list(APPEND pictures ${found})
  # Removed first, so that deleted pictures disappear here, too.
  list(APPEND copy_folders
      COMMAND ${CMAKE_COMMAND} -E rm -rf ${SORVIK_RESOURCES}/${folder}
      COMMAND ${CMAKE_COMMAND} -E copy_directory
          ${PROJECT_SOURCE_DIR}/resources/${folder} ${SORVIK_RESOURCES}/${folder})
endforeach()
add_custom_command(
    OUTPUT ${PROJECT_BINARY_DIR}/pictures.stamp
    ${copy_folders}
    COMMAND ${CMAKE_COMMAND} -E touch ${PROJECT_BINARY_DIR}/pictures.stamp
    DEPENDS ${pictures}
    COMMENT "Copying pictures" VERBATIM)

set(catalogues)
file(GLOB translations CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/resources/locale/*.po)
foreach(source ${translations})
  get_filename_component(language ${source} NAME_WE)
  set(folder ${SORVIK_RESOURCES}/locale/${language})
  add_custom_command(
      OUTPUT ${folder}/sorvik.mo
      COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
      COMMAND ${SORVIK_MSGFMT} --check --output-file=${folder}/sorvik.mo ${source}
      DEPENDS ${source}
      COMMENT "Compiling catalogue ${language}" VERBATIM)
  list(APPEND catalogues ${folder}/sorvik.mo)
endforeach()

add_custom_target(sorvik_resources ALL
    DEPENDS ${PROJECT_BINARY_DIR}/pictures.stamp ${catalogues})
# Tests and fuzzers link the objects and search the folder like the library.
add_dependencies(sorvik_objects sorvik_resources)

install(DIRECTORY ${SORVIK_RESOURCES}/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/SorvikProvider/resources COMPONENT library)
