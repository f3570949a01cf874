# tv_add_tests(<name> [GUI] LABEL <label> SOURCES <files...> LIBS <targets...>)
# One test executable per library; every case is registered with CTest
# under the library's short label so that `ctest -L <label>` runs them.
# GUI tests get tvguitestmain (a QApplication on the offscreen platform)
# as their main instead of GoogleTest's. Every test links the shared
# helpers of TestSupport (tvtestsupport).
function(tv_add_tests name)
  if(NOT TV_TESTS)
    return()
  endif()
  cmake_parse_arguments(T "GUI" "LABEL" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  if(T_GUI)
    target_link_libraries(${name} PRIVATE ${T_LIBS} tvtestsupport tvguitestmain GTest::gtest)
  else()
    target_link_libraries(${name} PRIVATE ${T_LIBS} tvtestsupport GTest::gtest GTest::gtest_main)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if(NOT T_GUI)
    tv_sanitizer_defaults(${name}) # the GUI main carries them
  endif()
  gtest_discover_tests(${name}
    PROPERTIES LABELS ${T_LABEL}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60)
endfunction()

# Adds the tests/ folder beside a library when tests are built, so that a
# folder's own test settings never meet a target that doesn't exist.
macro(tv_add_tests_folder)
  if(TV_TESTS)
    add_subdirectory(tests)
  endif()
endmacro()

# Programs of a sanitizer build carry the leak checker's suppressions for
# what the toolkit never frees (LibCore/application/tvsanitizerdefaults.cpp).
function(tv_sanitizer_defaults target)
  if(TV_SANITIZE)
    target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/LibCore/application/tvsanitizerdefaults.cpp)
  endif()
endfunction()
