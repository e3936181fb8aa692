# lum_install_text(DESTINATION FOLDER FILES file...)
#
# Texts with the line ends that Windows' own editor needs. Those ending with .md become .txt, and what they say of each
# other's names follows.
function(lum_install_text)
  cmake_parse_arguments(arg "" "DESTINATION" "FILES" ${ARGN})
  foreach(file IN LISTS arg_FILES)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    cmake_path(GET file FILENAME name)
    string(REGEX REPLACE "\\.md$" ".txt" name "${name}")
    set(text "${CMAKE_CURRENT_BINARY_DIR}/${arg_DESTINATION}/${name}")
    file(READ "${file}" content)
    string(REPLACE ".md" ".txt" content "${content}")
    file(CONFIGURE OUTPUT "${text}" CONTENT "${content}" @ONLY NEWLINE_STYLE WIN32)
    install(FILES "${text}" DESTINATION "${arg_DESTINATION}")
  endforeach()
endfunction()
