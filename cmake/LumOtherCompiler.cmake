# DLLs as the compiler of real plugins builds them, or rather one that makes the same code and reads the same
# tables. It needs no headers and no libraries of that compiler; the few declarations of the system that
# plugins use are in tests/sdk/msvc. For the Windows target only.

find_program(LUM_CLANG NAMES clang++ clang++-14 REQUIRED)
find_program(LUM_LLD_LINK NAMES lld-link lld-link-14 REQUIRED)
find_program(LUM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14 REQUIRED)

# lum_other_object(OBJECTS source.cpp [OPTION...])
#
# Compiles a source file and appends the object file to the list of that name.
function(lum_other_object list_name source)
  cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE path)
  cmake_path(GET path FILENAME name)
  set(object "${CMAKE_CURRENT_BINARY_DIR}/${name}.obj")
  add_custom_command(OUTPUT "${object}"
    COMMAND "${LUM_CLANG}" -target i686-pc-windows-msvc -nostdinc -std=c++20 -O2 -fms-extensions
      -fexceptions -fcxx-exceptions -Wall -Wextra -Wshadow -Werror
      "-I${CMAKE_SOURCE_DIR}/sdk" "-I${CMAKE_SOURCE_DIR}/tests/sdk/msvc" ${ARGN}
      -MD -MF "${object}.d" -c "${path}" -o "${object}"
    MAIN_DEPENDENCY "${path}" DEPFILE "${object}.d" VERBATIM)
  set(${list_name} ${${list_name}} "${object}" PARENT_SCOPE)
endfunction()

# lum_other_dll(TARGET OBJECTS object... [DEF file.def] [IMPORTS file.def...] [OPTIONS option...])
#
# Links TARGET.dll without any C runtime but what IMPORTS name.
function(lum_other_dll target)
  cmake_parse_arguments(arg "" "DEF" "OBJECTS;IMPORTS;OPTIONS" ${ARGN})
  set(libraries)
  foreach(import IN LISTS arg_IMPORTS)
    cmake_path(ABSOLUTE_PATH import OUTPUT_VARIABLE path)
    cmake_path(GET path STEM name)
    set(library "${CMAKE_CURRENT_BINARY_DIR}/${target}.${name}.lib")
    add_custom_command(OUTPUT "${library}"
      COMMAND "${LUM_DLLTOOL}" -k -m i386 -d "${path}" -l "${library}"
      MAIN_DEPENDENCY "${path}" VERBATIM)
    list(APPEND libraries "${library}")
  endforeach()
  set(dll "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.dll")
  set(def)
  if(arg_DEF)
    set(def "/def:${arg_DEF}")
  endif()
  add_custom_command(OUTPUT "${dll}"
    COMMAND "${LUM_LLD_LINK}" /nologo /dll "/out:${dll}" "/implib:${CMAKE_CURRENT_BINARY_DIR}/${target}.lib"
      /nodefaultlib /safeseh:no /subsystem:windows,5.0 ${def} ${arg_OPTIONS} ${arg_OBJECTS} ${libraries}
    DEPENDS ${arg_OBJECTS} ${libraries} ${arg_DEF} VERBATIM)
  add_custom_target(${target} ALL DEPENDS "${dll}")
endfunction()
