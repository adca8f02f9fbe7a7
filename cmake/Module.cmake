# The modules, and the arrows between them. Every library, program and test is made by a function of
# this file.
#
# A header that lies directly in a module's folder is public: every module that links this one
# includes it by its path below src/ ("editor/document/document.h"). A header in the module's
# internal/ folder is its own: only the module's sources and its tests can include it.
#
# Both are reached through folders of the build tree that hold nothing but links to the headers of
# one module. These folders travel with the link graph, so a module that is not linked cannot be
# included. cmake/Fences.cmake proves it whenever the build is configured for the first time.

include(Fences)

# Most of the time of a build goes into parsing the same headers (JSON, Qt, coroutines) and into
# instantiating the same templates again for each source. Sources of a target are therefore compiled
# several at a time, which takes a third of the processor time; precompiled headers only saved a
# quarter. Helpers in the unnamed namespaces of one target must have different names, or the target
# is marked APART. Off, each source is compiled by itself: better while working on one file, and for
# clang-tidy.
option(FRAMEWRIGHT_UNITY "Compile several sources of a target at a time" ON)
set(FRAMEWRIGHT_SOURCES_AT_A_TIME 9)

# What every target has in common. `fenced` are the libraries it must not include.
function(_framewright_target name fenced apart)
    foreach(library IN LISTS fenced)
        target_include_directories(${name} BEFORE PRIVATE ${FRAMEWRIGHT_FENCES}/${library})
    endforeach()
    if(FRAMEWRIGHT_UNITY AND NOT apart)
        get_target_property(sources ${name} SOURCES)
        list(LENGTH sources count)
        # Batches of equal size: the last one would otherwise be a single file.
        math(EXPR batches "(${count} - 1) / ${FRAMEWRIGHT_SOURCES_AT_A_TIME} + 1")
        math(EXPR size "(${count} - 1) / ${batches} + 1")
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${size})
    endif()
endfunction()

# framewright_module(NAME SOURCES file... [USES module...] [EXPOSES library...] [HIDES library...]
#                    [HEADERS file...] [OPENS library...] [APART] [PRECOMPILES header...])
#   USES     modules below this one
#   EXPOSES  libraries whose types appear in this module's public headers
#   HIDES    libraries used in its sources only
#   HEADERS  where one folder holds several modules: the public headers of this one
#   OPENS    fenced libraries (ffmpeg, heif) that this module is there to wrap; its tests may
#            include them too
#   APART    its sources are compiled one by one, because names of their own are the same
#   PRECOMPILES  headers parsed once, for such a module
function(framewright_module name)
    cmake_parse_arguments(arg "APART" "" "SOURCES;HEADERS;USES;EXPOSES;HIDES;OPENS;PRECOMPILES"
        ${ARGN})
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${CMAKE_SOURCE_DIR}/src
        OUTPUT_VARIABLE folder)
    if(NOT arg_HEADERS)
        file(GLOB arg_HEADERS CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.h)
    endif()
    set(gate ${CMAKE_BINARY_DIR}/include/${name})
    set(own_gate ${CMAKE_BINARY_DIR}/own/${name})
    file(REMOVE_RECURSE ${gate})
    file(MAKE_DIRECTORY ${gate}/${folder} ${own_gate}/${folder})
    foreach(header IN LISTS arg_HEADERS)
        file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${gate}/${folder}/${header} SYMBOLIC)
    endforeach()
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/internal ${own_gate}/${folder}/internal SYMBOLIC)

    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${gate} PRIVATE ${own_gate})
    target_link_libraries(${name} PUBLIC ${arg_USES} ${arg_EXPOSES} PRIVATE ${arg_HIDES})
    set(fenced ${FRAMEWRIGHT_FENCED})
    list(REMOVE_ITEM fenced ${arg_OPENS})
    _framewright_target(${name} "${fenced}" ${arg_APART})
    set_target_properties(${name} PROPERTIES FRAMEWRIGHT_FENCED_FROM "${fenced}")
    if(arg_PRECOMPILES)
        target_precompile_headers(${name} PRIVATE ${arg_PRECOMPILES})
    endif()
endfunction()

# framewright_program(NAME SOURCES file... USES module-or-library...)
#   An executable of the product, a test's or a benchmark's. It sees public headers only.
function(framewright_program name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_USES})
    _framewright_target(${name} "${FRAMEWRIGHT_FENCED}" TRUE)
endfunction()

# framewright_loaded(NAME SOURCES file... USES module-or-library...)
#   The same for what a program loads while it runs.
function(framewright_loaded name)
    cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
    add_library(${name} MODULE ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_USES})
    target_link_options(${name} PRIVATE -Wl,-z,defs)
    _framewright_target(${name} "${FRAMEWRIGHT_FENCED}" TRUE)
endfunction()

# Options of the sanitizers in every test. Without interception of __tls_get_addr: the runtime of
# g++ 12 mistakes one in 256 addresses of a thread's block for one with a header before it, and then
# its leak checker reads wherever that points to. It finds such blocks through their threads as well.
set(FRAMEWRIGHT_SANITIZER_OPTIONS
    "ASAN_OPTIONS=detect_leaks=1:intercept_tls_get_addr=0"
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")

# framewright_tests(MODULE SOURCES file... [USES module...] [NEEDS library...] [APART])
#   One test executable for a module, named MODULE_tests and run by CTest under the module's name.
function(framewright_tests module)
    cmake_parse_arguments(arg "APART" "" "SOURCES;USES;NEEDS" ${ARGN})
    add_executable(${module}_tests ${arg_SOURCES})
    target_include_directories(${module}_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests
        ${CMAKE_BINARY_DIR}/own/${module})
    target_compile_definitions(${module}_tests PRIVATE
        FRAMEWRIGHT_SHARED_MEDIA="${CMAKE_SOURCE_DIR}/../shared/media")
    target_link_libraries(${module}_tests PRIVATE ${module} ${arg_USES} ${arg_NEEDS}
        GTest::gmock GTest::gtest GTest::gtest_main)
    get_target_property(fenced ${module} FRAMEWRIGHT_FENCED_FROM)
    _framewright_target(${module}_tests "${fenced}" ${arg_APART})
    # Optimising what runs once costs more time than it saves.
    target_compile_options(${module}_tests PRIVATE ${FRAMEWRIGHT_TEST_OPTIMIZATION})
    add_test(NAME ${module} COMMAND ${module}_tests)
    set_tests_properties(${module} PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${FRAMEWRIGHT_SANITIZER_OPTIONS}")
endfunction()

framewright_prove_fences()
