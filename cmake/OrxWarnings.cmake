# Strict warnings for our own targets only; third-party headers are included
# as system headers and stay quiet. Under clang, -Wthread-safety checks the lock annotations
# of <orx/sync/thread_annotations.h>, so touching a GUARDED_BY member without its lock fails the
# build; -Wthread-safety-beta adds the lock order (ACQUIRED_AFTER).
set(ORX_THREAD_SAFETY_FLAGS -Wthread-safety -Wthread-safety-beta)
function(orx_target_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror
    -Wnon-virtual-dtor -Wno-unknown-pragmas)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${target} PRIVATE ${ORX_THREAD_SAFETY_FLAGS})
  else()
    target_compile_options(${target} PRIVATE -Wshadow=local)
  endif()
endfunction()

# Creates a shared library of ours with the project defaults; it links orx_sync, so its code
# and its users can name the annotated locks.
#   orx_add_library(NAME <name> SOURCES ... [PUBLIC_INCLUDE dir] [DEPS ...] [EXPORT_MACRO_TARGET])
function(orx_add_library name)
  cmake_parse_arguments(ARG "STATIC" "INCLUDE" "SOURCES;DEPS;PRIVATE_DEPS" ${ARGN})
  if(ARG_STATIC)
    add_library(${name} STATIC ${ARG_SOURCES})
  else()
    add_library(${name} SHARED ${ARG_SOURCES})
  endif()
  if(ARG_INCLUDE)
    target_include_directories(${name} PUBLIC ${ARG_INCLUDE})
  endif()
  target_link_libraries(${name} PUBLIC ${ARG_DEPS} orx_sync PRIVATE ${ARG_PRIVATE_DEPS})
  orx_target_warnings(${name})
endfunction()

# A GoogleTest binary registered with ctest, one ctest case per test case so
# every case runs in a fresh process (process-wide singletons start clean).
#   orx_add_gtest(<name> SOURCES ... DEPS ... [LABELS ...])
function(orx_add_gtest name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gmock GTest::gtest_main Threads::Threads)
  orx_target_warnings(${name})
  set(labels unit)
  if(ARG_LABELS)
    set(labels ${ARG_LABELS})
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS "${labels}" TIMEOUT 120)
endfunction()
