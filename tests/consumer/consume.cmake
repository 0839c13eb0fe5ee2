# Builds and runs the consumer project against velk.
#   MODE=installed: installs BUILD_DIR into a fresh prefix and uses find_package.
#   MODE=subdirectory: adds SOURCE_DIR with add_subdirectory.
foreach(var MODE BUILD_DIR SOURCE_DIR WORK_DIR GENERATOR)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "${var} not set")
    endif()
endforeach()

file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
set(consumer_build "${WORK_DIR}/build")

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed (${result}): ${ARGN}")
    endif()
endfunction()

if(MODE STREQUAL "installed")
    run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
    set(configure_args "-DCMAKE_PREFIX_PATH=${prefix}")
else()
    set(configure_args "-DVELK_SOURCE_DIR=${SOURCE_DIR}")
endif()

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/tests/consumer/project" -B "${consumer_build}"
    -G "${GENERATOR}" -DCMAKE_BUILD_TYPE=Release ${configure_args})
run("${CMAKE_COMMAND}" --build "${consumer_build}" -j 2)
run("${consumer_build}/consumer")

# A consumer that includes an internal header by name does not compile.
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${consumer_build}" --target internal_probe
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(result EQUAL 0 OR NOT output MATCHES "periodic.h")
    message(FATAL_ERROR "internal header reachable from a consumer (${result}):\n${output}")
endif()

if(MODE STREQUAL "installed")
    # The package also answers pkg-config.
    run(env "PKG_CONFIG_PATH=${prefix}/lib/pkgconfig" pkg-config --exists velk)
endif()
