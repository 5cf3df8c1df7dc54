# One way to declare each kind of target, so that flags, warnings and the precompiled header are the same everywhere.

add_library(tarvo_flags INTERFACE)
target_compile_options(tarvo_flags INTERFACE -Wall -Wextra -Wpedantic -Woverloaded-virtual
  # Structs with designated initialisers name the members that matter.
  -Wno-missing-field-initializers)
target_compile_options(tarvo_flags INTERFACE
  # Clang asks for braces that aggregates may leave out, and checks which mutex guards what.
  "$<$<CXX_COMPILER_ID:Clang>:-Wno-missing-braces;-Wthread-safety>"
  # To g++ every source of a batch is a header, whose classes should not use an anonymous namespace.
  "$<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>")
if(TARVO_WARNINGS_AS_ERRORS)
  target_compile_options(tarvo_flags INTERFACE -Werror)
endif()
target_compile_options(tarvo_flags INTERFACE "$<$<CONFIG:Debug>:-O0;-g1>")
target_link_options(tarvo_flags INTERFACE -fuse-ld=lld)
if(TARVO_SANITIZE)
  # Frames and line numbers are what a report needs; full debug information doubles the build.
  target_compile_options(tarvo_flags INTERFACE -fsanitize=${TARVO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(tarvo_flags INTERFACE -fsanitize=${TARVO_SANITIZE})
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  # Without this sloppiness ccache refuses every file that uses a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE_PROGRAM})
endif()

# The one precompiled header of a configuration: the standard library only.
add_library(tarvo_pch STATIC ${CMAKE_SOURCE_DIR}/cmake/pch.cpp)
target_link_libraries(tarvo_pch PRIVATE tarvo_flags)
target_precompile_headers(tarvo_pch PRIVATE ${CMAKE_SOURCE_DIR}/cmake/pch.h)

# Sources are compiled in batches of about this many: most of a compilation is reading headers. 0 compiles each source
# alone. So names in an anonymous namespace must differ within a library or test binary, not only within a file.
set(TARVO_BATCH_SIZE 10 CACHE STRING "Sources that are compiled together; 0 compiles each alone")

# Puts neighbouring folders into one batch while they fit, and splits a large folder evenly, so that a new file changes
# the batches around it and no others.
function(tarvo_batch target)
  if(NOT TARVO_BATCH_SIZE)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  list(SORT sources)
  set(folders "")
  foreach(source ${sources})
    get_filename_component(folder ${source} DIRECTORY)
    string(MAKE_C_IDENTIFIER "${folder}" folder)
    if(NOT folder IN_LIST folders)
      list(APPEND folders ${folder})
    endif()
    list(APPEND in_${folder} ${source})
  endforeach()
  set(batch 0)
  set(filled 0)
  foreach(folder ${folders})
    list(LENGTH in_${folder} count)
    math(EXPR parts "(${count} + ${TARVO_BATCH_SIZE} - 1) / ${TARVO_BATCH_SIZE}")
    math(EXPR share "(${count} + ${parts} - 1) / ${parts}")
    math(EXPR together "${filled} + ${count}")
    if(together GREATER TARVO_BATCH_SIZE AND filled GREATER 0)
      math(EXPR batch "${batch} + 1")
      set(filled 0)
    endif()
    foreach(source ${in_${folder}})
      if(parts GREATER 1 AND filled EQUAL share)
        math(EXPR batch "${batch} + 1")
        set(filled 0)
      endif()
      set_source_files_properties(${source} PROPERTIES UNITY_GROUP batch${batch})
      math(EXPR filled "${filled} + 1")
    endforeach()
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()

function(tarvo_common target)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}> $<INSTALL_INTERFACE:include/tarvobase>)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tarvo_flags>)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_precompile_headers(${target} REUSE_FROM tarvo_pch)
  tarvo_batch(${target})
endfunction()

# tarvo_library(name PUBLIC_LINKS a b PRIVATE_LINKS c d): a static library of all sources below the current folder.
function(tarvo_library name)
  cmake_parse_arguments(arg "" "" "PUBLIC_LINKS;PRIVATE_LINKS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  if(NOT sources)
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_PUBLIC_LINKS} ${arg_PRIVATE_LINKS})
    target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}> $<INSTALL_INTERFACE:include/tarvobase>)
    return()
  endif()
  add_library(${name} STATIC ${sources})
  tarvo_common(${name})
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC_LINKS} PRIVATE ${arg_PRIVATE_LINKS})
endfunction()

# tarvo_program(name SOURCES main.cpp LINKS a b)
function(tarvo_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  tarvo_common(${name})
  target_link_libraries(${name} PRIVATE ${arg_LINKS})
endfunction()

# tarvo_test(name FOLDER dir LINKS a b): a GoogleTest binary of all sources of a folder, one ctest entry a binary.
function(tarvo_test name)
  cmake_parse_arguments(arg "" "FOLDER" "LINKS;LABELS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${arg_FOLDER}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  tarvo_common(${name})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=0)
  set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 900
    ENVIRONMENT "TARVO_BIN_DIR=${CMAKE_BINARY_DIR}/bin;TARVO_SOURCE_DIR=${CMAKE_SOURCE_DIR};TARVO_BINARY_DIR=${CMAKE_BINARY_DIR}")
endfunction()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
