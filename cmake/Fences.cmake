# What must not be included, and the proof that it can't be.
#
# The headers of FFmpeg and libheif are in the compiler's default folders, so not linking these
# libraries keeps nobody from including them. Targets that must not use them therefore find, before
# the real ones, headers of the same names that hold nothing but an #error.

set(FRAMEWRIGHT_FENCES ${CMAKE_BINARY_DIR}/fences)
set(FRAMEWRIGHT_FENCED ffmpeg heif)

# Puts a barred header in place of each header in `folders` of the library.
function(_framewright_fence library first_header)
    find_path(FRAMEWRIGHT_${library}_HEADERS ${first_header} REQUIRED)
    mark_as_advanced(FRAMEWRIGHT_${library}_HEADERS)
    foreach(folder IN LISTS ARGN)
        file(GLOB headers RELATIVE ${FRAMEWRIGHT_${library}_HEADERS}
            ${FRAMEWRIGHT_${library}_HEADERS}/${folder}/*.h)
        foreach(header IN LISTS headers)
            file(CONFIGURE OUTPUT ${FRAMEWRIGHT_FENCES}/${library}/${header}
                CONTENT "#error \"${header} may only be included in src/media\"\n")
        endforeach()
    endforeach()
endfunction()

_framewright_fence(ffmpeg libavcodec/avcodec.h
    libavcodec libavdevice libavfilter libavformat libavutil libpostproc libswresample libswscale)
_framewright_fence(heif libheif/heif.h libheif)

define_property(TARGET PROPERTY FRAMEWRIGHT_FENCED_FROM)

# Compiles the same source without and with one forbidden include: the first must compile and the
# second must fail for the expected reason. Made as a project of its own, with this very file and
# Module.cmake, so the functions are tried and not a copy of what they do.
function(framewright_prove_fences)
    if(FRAMEWRIGHT_IN_FENCE_TRIAL)
        return()
    endif()
    file(SHA256 ${CMAKE_SOURCE_DIR}/cmake/Module.cmake module)
    file(SHA256 ${CMAKE_SOURCE_DIR}/cmake/Fences.cmake fences)
    file(SHA256 ${CMAKE_SOURCE_DIR}/cmake/fences/CMakeLists.txt trial)
    set(state "${module} ${fences} ${trial} ${CMAKE_CXX_COMPILER}")
    if(FRAMEWRIGHT_FENCES_PROVEN STREQUAL state)
        return()
    endif()

    set(build ${CMAKE_BINARY_DIR}/fences/trial)
    file(REMOVE_RECURSE ${build})
    execute_process(
        COMMAND ${CMAKE_COMMAND} -G ${CMAKE_GENERATOR} -S ${CMAKE_SOURCE_DIR}/cmake/fences -B ${build}
            -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER} -DCMAKE_CXX_COMPILER_WORKS=ON
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "The fences could not be tried:\n${output}")
    endif()

    function(try_fence target expected)
        execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} --target ${target}
            RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
        if(expected STREQUAL "" AND NOT result EQUAL 0)
            message(FATAL_ERROR "${target} does not compile although nothing in it is forbidden:\n${output}")
        elseif(NOT expected STREQUAL "")
            if(result EQUAL 0)
                message(FATAL_ERROR "${target} compiles, so there is a gap in the fences.")
            endif()
            string(REGEX MATCH "[^\n]*error:[^\n]*${expected}[^\n]*" why "${output}")
            if(why STREQUAL "")
                message(FATAL_ERROR "${target} fails for another reason than \"${expected}\":\n${output}")
            endif()
            message(STATUS "Fence holds: ${why}")
        endif()
    endfunction()

    try_fence(allowed "")
    try_fence(allowed_inside "")
    try_fence(foreign_internal "inside/internal/own.h: No such file")
    try_fence(unlinked_module "inside/inside.h: No such file")
    try_fence(ffmpeg "libavcodec/avcodec.h may only be included in src/media")
    try_fence(heif "libheif/heif.h may only be included in src/media")
    set(FRAMEWRIGHT_FENCES_PROVEN "${state}" CACHE INTERNAL "Inputs of the last proof of the fences")
endfunction()
