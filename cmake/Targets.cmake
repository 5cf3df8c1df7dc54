# One way to declare each kind of target, so that flags, warnings and batches are the same everywhere.

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

# The compiler cache knows a file again in another checkout: paths below this one are relative to it.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
endif()

# Sources are compiled in batches of about this many: most of a compilation is reading headers, which a precompiled
# header of the standard library made no quicker any more. 0 compiles each source alone. So names in an anonymous
# namespace must differ within a library or test binary, not only within a file.
set(TARVO_BATCH_SIZE 12 CACHE STRING "Sources that are compiled together; 0 compiles each alone")

# tarvo_batches(out target sources..): sets `out` to the files to compile for these sources. Each includes a batch of them by
# paths from the root, so that the compiler cache knows it again in another checkout. Neighbouring small folders share a
# batch and a large folder is split evenly, so that a new file changes the batches around it and no others.
function(tarvo_batches out target)
  set(sources ${ARGN})
  if(NOT TARVO_BATCH_SIZE)
    set(${out} ${sources} PARENT_SCOPE)
    return()
  endif()
  list(SORT sources)
  set(folders "")
  foreach(source ${sources})
    file(RELATIVE_PATH path ${CMAKE_SOURCE_DIR} ${source})
    get_filename_component(folder ${path} DIRECTORY)
    string(MAKE_C_IDENTIFIER "${folder}" folder)
    if(NOT folder IN_LIST folders)
      list(APPEND folders ${folder})
    endif()
    list(APPEND in_${folder} ${path})
  endforeach()
  set(batches "")
  set(filled 0)
  foreach(folder ${folders})
    list(LENGTH in_${folder} count)
    math(EXPR parts "(${count} + ${TARVO_BATCH_SIZE} - 1) / ${TARVO_BATCH_SIZE}")
    math(EXPR share "(${count} + ${parts} - 1) / ${parts}")
    math(EXPR together "${filled} + ${count}")
    set(place 0)
    foreach(path ${in_${folder}})
      math(EXPR begins "${place} % ${share}")
      if(begins EQUAL 0 AND (place GREATER 0 OR NOT batches OR together GREATER TARVO_BATCH_SIZE))
        math(EXPR number "${place} / ${share} + 1")
        set(batch ${folder}_${number})
        list(APPEND batches ${batch})
        set(filled 0)
      endif()
      string(APPEND text_${batch} "#include \"${path}\"\n")
      math(EXPR place "${place} + 1")
      math(EXPR filled "${filled} + 1")
    endforeach()
  endforeach()
  set(files "")
  foreach(batch ${batches})
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}_batches/${batch}.cpp)
    file(CONFIGURE OUTPUT ${file} CONTENT "${text_${batch}}" @ONLY)
    list(APPEND files ${file})
  endforeach()
  set(${out} ${files} PARENT_SCOPE)
endfunction()

function(tarvo_common target)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}> $<INSTALL_INTERFACE:include/tarvobase>)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tarvo_flags>)
  target_compile_features(${target} PUBLIC cxx_std_20)
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
  tarvo_batches(batches ${name} ${sources})
  add_library(${name} STATIC ${batches})
  tarvo_common(${name})
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC_LINKS} PRIVATE ${arg_PRIVATE_LINKS})
endfunction()

# tarvo_program(name SOURCES main.cpp LINKS a b)
function(tarvo_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]")
  tarvo_batches(batches ${name} ${arg_SOURCES})
  add_executable(${name} ${batches})
  tarvo_common(${name})
  target_link_libraries(${name} PRIVATE ${arg_LINKS})
endfunction()

# All test binaries with the label "threads": what the thread sanitizer runs.
add_custom_target(threaded_tests)

# tarvo_test(name FOLDERS dir.. SOURCES file.. LINKS a b LABELS c d SHARDS n): a GoogleTest binary of all sources of some
# folders and of single further ones, with one ctest entry per shard. Shards of a slow group run side by side.
function(tarvo_test name)
  cmake_parse_arguments(arg "" "SHARDS" "FOLDERS;SOURCES;LINKS;LABELS" ${ARGN})
  set(sources "")
  foreach(folder ${arg_FOLDERS})
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
    if(NOT found)
      message(FATAL_ERROR "${name}: no tests in ${folder}")
    endif()
    list(APPEND sources ${found})
  endforeach()
  list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(APPEND sources ${arg_SOURCES})
  set_property(GLOBAL APPEND PROPERTY TARVO_TEST_SOURCES ${sources})
  # A test takes compilers twice as long as another source, and is edited more often.
  math(EXPR TARVO_BATCH_SIZE "${TARVO_BATCH_SIZE} / 2")
  tarvo_batches(batches ${name} ${sources})
  add_executable(${name} ${batches})
  tarvo_common(${name})
  target_link_libraries(${name} PRIVATE ${arg_LINKS} GTest::gmock GTest::gtest_main)
  if(threads IN_LIST arg_LABELS)
    add_dependencies(threaded_tests ${name})
  endif()
  set(environment TARVO_BIN_DIR=${CMAKE_BINARY_DIR}/bin TARVO_SOURCE_DIR=${CMAKE_SOURCE_DIR} TARVO_BINARY_DIR=${CMAKE_BINARY_DIR})
  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  foreach(shard RANGE 1 ${arg_SHARDS})
    set(entry ${name})
    set(environment_of_shard ${environment})
    if(arg_SHARDS GREATER 1)
      string(APPEND entry _${shard})
      math(EXPR index "${shard} - 1")
      list(APPEND environment_of_shard GTEST_TOTAL_SHARDS=${arg_SHARDS} GTEST_SHARD_INDEX=${index})
    endif()
    add_test(NAME ${entry} COMMAND ${name} --gtest_brief=0)
    # The slow ones, which have shards, start first.
    set_tests_properties(${entry} PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 900 COST ${arg_SHARDS}
      ENVIRONMENT "${environment_of_shard}")
  endforeach()
endfunction()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
