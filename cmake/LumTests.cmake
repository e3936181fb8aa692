# Test suites: GoogleTest programs that CTest runs, on the machine itself or under Wine.

if(WIN32)
  set(LUM_GOOGLETEST "/usr/src/googletest/googletest" CACHE PATH
    "The sources of GoogleTest, which the Windows target builds with its own compiler")
  add_library(lum_gtest STATIC "${LUM_GOOGLETEST}/src/gtest-all.cc" "${LUM_GOOGLETEST}/src/gtest_main.cc")
  target_include_directories(lum_gtest PRIVATE "${LUM_GOOGLETEST}")
  target_link_libraries(lum_gtest PRIVATE lum_platform)
  # The first folder has what GoogleTest lacks for this compiler.
  target_include_directories(lum_gtest SYSTEM BEFORE PUBLIC
    "${CMAKE_SOURCE_DIR}/tests/support/googletest" "${LUM_GOOGLETEST}/include")
else()
  find_package(GTest REQUIRED)
  add_library(lum_gtest INTERFACE)
  target_link_libraries(lum_gtest INTERFACE GTest::gtest_main)
endif()

# The suites that run threads, which the thread sanitizer is to see.
add_custom_target(thread_suites)

# lum_add_test_suite(NAME SOURCES file.cpp... [LIBS library...] [NEEDS target...] [PRIVATE_REGISTRY] [THREADS])
#
# One program in bin/, one CTest of that name. It runs in a folder of its own, where it may leave files.
# NEEDS names what it loads at run time. THREADS: it runs threads, and gets the label of that name.
# PRIVATE_REGISTRY: on Windows it sees a registry of its own: nothing that goes wrong in it may keep anybody from
# logging on.
function(lum_add_test_suite name)
  cmake_parse_arguments(arg "PRIVATE_REGISTRY;THREADS" "" "SOURCES;LIBS;NEEDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  if(WIN32 AND arg_PRIVATE_REGISTRY)
    target_sources(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests/chaining/windows/PrivateRegistry.cpp")
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LIBS} lum_options lum_platform lum_gtest)
  if(arg_NEEDS)
    add_dependencies(${name} ${arg_NEEDS})
  endif()

  set(folder "${CMAKE_BINARY_DIR}/tests/run/${name}")
  file(MAKE_DIRECTORY "${folder}")
  set(run)
  if(WIN32)
    set(run "${CMAKE_SOURCE_DIR}/scripts/run-wine")
  endif()
  add_test(NAME ${name} COMMAND ${run} "$<TARGET_FILE:${name}>" WORKING_DIRECTORY "${folder}")
  set_tests_properties(${name} PROPERTIES TIMEOUT 1200)
  if(arg_THREADS)
    add_dependencies(thread_suites ${name})
    set_property(TEST ${name} APPEND PROPERTY LABELS threads)
  endif()
  if(WIN32)
    # Natively each process has a registry of its own; under Wine they share one. A program that dies may
    # exit with 0 there, so that the verdict is what GoogleTest says.
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK machine_registry
      PASS_REGULAR_EXPRESSION "\\[  PASSED  \\]" FAIL_REGULAR_EXPRESSION "\\[  FAILED  \\]")
  else()
    # Pipes are those of this suite alone.
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT "XDG_RUNTIME_DIR=${folder}")
  endif()
endfunction()
