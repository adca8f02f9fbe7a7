# The modules, and the arrows between them.
#
# A header that lies directly in a module's folder is public: every module that links this one
# includes it by its path below src/ ("editor/document/document.h"). A header in the module's
# internal/ folder is its own: only the module's sources and its tests can include it.
#
# Both are reached through folders of the build tree that hold nothing but links to the headers of
# one module. These folders travel with the link graph, so a module that is not linked cannot be
# included.

# framewright_module(NAME SOURCES file... [USES module...] [EXPOSES library...] [HIDES library...]
#                    [HEADERS file...])
#   USES     modules below this one
#   EXPOSES  libraries whose types appear in this module's public headers
#   HIDES    libraries used in its sources only
#   HEADERS  where one folder holds several modules: the public headers of this one
function(framewright_module name)
    cmake_parse_arguments(arg "" "" "SOURCES;HEADERS;USES;EXPOSES;HIDES" ${ARGN})
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
endfunction()

# What the sanitizers are told in every test. Without interception of __tls_get_addr: the runtime of
# g++ 12 takes a thread's block at one in 256 addresses for one with a header before it, and then its
# leak checker reads wherever that points to. It finds such blocks through their threads as well.
set(FRAMEWRIGHT_SANITIZER_OPTIONS
    "ASAN_OPTIONS=detect_leaks=1:intercept_tls_get_addr=0"
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")

# framewright_tests(MODULE SOURCES file... [USES module...] [NEEDS library...])
#   One test executable for a module, named MODULE_tests and run by CTest under the module's name.
function(framewright_tests module)
    cmake_parse_arguments(arg "" "" "SOURCES;USES;NEEDS" ${ARGN})
    add_executable(${module}_tests ${arg_SOURCES})
    target_include_directories(${module}_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests
        ${CMAKE_BINARY_DIR}/own/${module})
    target_compile_definitions(${module}_tests PRIVATE
        FRAMEWRIGHT_SHARED_MEDIA="${CMAKE_SOURCE_DIR}/../shared/media")
    target_link_libraries(${module}_tests PRIVATE ${module} ${arg_USES} ${arg_NEEDS}
        GTest::gmock GTest::gtest GTest::gtest_main)
    if(FRAMEWRIGHT_SANITIZE)
        # Most of the time of a build with sanitizers goes into optimising their checks.
        target_compile_options(${module}_tests PRIVATE -O0)
    endif()
    add_test(NAME ${module} COMMAND ${module}_tests)
    set_tests_properties(${module} PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${FRAMEWRIGHT_SANITIZER_OPTIONS}")
endfunction()
