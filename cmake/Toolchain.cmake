# Compiler, linker and cache settings shared by every target.

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # The time macros and the precompiled header's own time stamp would otherwise defeat the cache;
    # paths below the source folder are made relative, so that clones share it.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
endif()

find_program(MOLD mold)
if(MOLD)
    add_link_options(-fuse-ld=mold)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow=local -Wnon-virtual-dtor -Woverloaded-virtual
    -fno-math-errno)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # A false alarm where one source includes others, as in a unity build: it takes their unnamed
    # namespaces for those of a header.
    add_compile_options(-Wno-subobject-linkage)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC bug 105651: false alarms where a string literal is put before a std::string.
    add_compile_options(-Wno-restrict)
endif()

if(FRAMEWRIGHT_SANITIZE)
    add_compile_options(-fsanitize=${FRAMEWRIGHT_SANITIZE} -fno-omit-frame-pointer -O1
        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${FRAMEWRIGHT_SANITIZE})
    # Lines for stack traces, but no variables and types.
    add_compile_options(-g1)
    # Most of the time of a build with sanitizers goes into optimising their checks.
    set(FRAMEWRIGHT_TEST_OPTIMIZATION -O0)
else()
    set(FRAMEWRIGHT_TEST_OPTIMIZATION -O1)
endif()
