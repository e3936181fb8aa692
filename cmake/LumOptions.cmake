# What every target of this project is built with, and how its DLLs are named and placed.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Winlogon finds a GINA by name beside itself or in the system directory. One directory for all
# programs and DLLs gives a build the same shape.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

add_library(lum_options INTERFACE)
target_compile_options(lum_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion -Werror
  # Trace lines and binaries carry file names as the checkout has them, not as this machine has.
  "-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees overlapping copies in std::string's operator+ where there are none.
  target_compile_options(lum_options INTERFACE -Wno-restrict)
endif()
target_include_directories(lum_options INTERFACE
  "${CMAKE_SOURCE_DIR}" "${CMAKE_SOURCE_DIR}/include")

if(NOT WIN32)
  target_include_directories(lum_options INTERFACE "${CMAKE_SOURCE_DIR}/platform/include")
else()
  # Windows 2000 is the oldest system that the library must load on.
  target_compile_definitions(lum_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN WINVER=0x0500 _WIN32_WINNT=0x0500)
  # A GINA may import from the system's own DLLs only.
  target_link_options(lum_options INTERFACE -static)
  # Wine reads a section that is not aligned in its file with a single read, and goes on if it got less: from
  # a network file system for sections of more than half a megabyte. What is missing is zeros then. A target
  # with the property LUM_SMALL has none that large.
  target_link_options(lum_options INTERFACE
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:LUM_SMALL>>>:-Wl,--file-alignment=4096>)
endif()

# lum_add_dll(TARGET SOURCE... [DEF file.def])
#
# A DLL as Windows has it: named TARGET.dll on both targets, exporting exactly the names that
# the .def file lists. The native linker is given the same list as a version script.
function(lum_add_dll target)
  cmake_parse_arguments(arg "" "DEF" "" ${ARGN})
  add_library(${target} MODULE ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${target} PRIVATE lum_options lum_platform)
  set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX ".dll")
  if(NOT arg_DEF)
    return()
  endif()
  if(WIN32)
    target_sources(${target} PRIVATE "${arg_DEF}")
    target_link_options(${target} PRIVATE -Wl,--enable-stdcall-fixup)
  else()
    lum_version_script("${arg_DEF}" "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
    target_link_options(${target} PRIVATE
      "-Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
  endif()
endfunction()

# lum_separate_symbols(TARGET)
#
# On Windows: keeps what a debugger needs beside the binary, in a file of its name and ".debug", where gdb looks.
function(lum_separate_symbols target)
  if(NOT WIN32)
    return()
  endif()
  set(file "$<TARGET_FILE:${target}>")
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "${file}" "${file}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --strip-all "--add-gnu-debuglink=${file}.debug" "${file}"
    VERBATIM)
endfunction()

# lum_add_version(TARGET VERSION DESCRIPTION)
#
# Gives a DLL the version resource 1. The native target has no resources; the same data is an exported
# object there, which the calls for resources find.
function(lum_add_version LUM_TARGET LUM_VERSION LUM_DESCRIPTION)
  string(REPLACE "." "," LUM_VERSION_NUMBERS "${LUM_VERSION}")
  if(WIN32)
    set(kind rc)
  else()
    set(kind cpp)
  endif()
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${LUM_TARGET}_version.${kind}")
  configure_file("${CMAKE_SOURCE_DIR}/cmake/version.${kind}.in" "${source}" @ONLY)
  target_sources(${LUM_TARGET} PRIVATE "${source}")
endfunction()

# lum_reduce_def(OUTPUT full.def LEFT_OUT name... [ADDED name...])
#
# Writes a .def file with all exports of another but those left out, and some more.
function(lum_reduce_def output full)
  cmake_parse_arguments(arg "" "" "LEFT_OUT;ADDED" ${ARGN})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${full}")
  file(STRINGS "${full}" lines)
  foreach(name IN LISTS arg_LEFT_OUT)
    if(NOT "    ${name}" IN_LIST lines)
      message(FATAL_ERROR "${full} has no export ${name} that could be left out")
    endif()
    list(REMOVE_ITEM lines "    ${name}")
  endforeach()
  foreach(name IN LISTS arg_ADDED)
    list(APPEND lines "    ${name}")
  endforeach()
  list(JOIN lines "\n" text)
  file(CONFIGURE OUTPUT "${output}" CONTENT "${text}\n")
endfunction()

# DllMain is not in a .def file, since the Windows loader finds it as the entry point; the
# native loader looks it up by name, as it does the version resource.
function(lum_version_script def map)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${def}")
  file(STRINGS "${def}" lines)
  set(names "DllMain; NativeVersionResource;")
  foreach(line IN LISTS lines)
    if(line MATCHES "^ +([A-Za-z_0-9]+)")
      string(APPEND names " ${CMAKE_MATCH_1};")
    endif()
  endforeach()
  file(WRITE "${map}" "{ global: ${names} local: *; };\n")
endfunction()

# lum_add_messages(TARGET events.h)
#
# On Windows: gives a DLL the message table of the events that a header lists, one a line:
# EVENT(identifier, name, type, "text").
function(lum_add_messages target header)
  if(NOT WIN32)
    return()
  endif()
  find_program(LUM_WINDMC i686-w64-mingw32-windmc REQUIRED)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
  file(READ "${header}" text)
  string(REGEX MATCHALL "\n +EVENT[^\n]*\"\\)" events "${text}")
  set(messages)
  foreach(event IN LISTS events)
    if(NOT event MATCHES "EVENT\\(([0-9]+), ([A-Za-z]+), [A-Z_]+, \"(.+)\"\\)$")
      message(FATAL_ERROR "${header} has an event that cannot be read:${event}")
    endif()
    string(APPEND messages "\nMessageId=${CMAKE_MATCH_1}\nSymbolicName=${CMAKE_MATCH_2}\n"
      "Language=English\n${CMAKE_MATCH_3}\n.\n")
  endforeach()
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}_messages")
  file(WRITE "${folder}/messages.mc" "LanguageNames=(English=0x409:messages)\n${messages}")
  add_custom_command(OUTPUT "${folder}/messages.rc" "${folder}/messages.bin"
    COMMAND "${LUM_WINDMC}" -h "${folder}" -r "${folder}" "${folder}/messages.mc"
    DEPENDS "${folder}/messages.mc" VERBATIM)
  target_sources(${target} PRIVATE "${folder}/messages.rc")
  set_source_files_properties("${folder}/messages.rc" PROPERTIES
    INCLUDE_DIRECTORIES "${folder}" OBJECT_DEPENDS "${folder}/messages.bin")
endfunction()
