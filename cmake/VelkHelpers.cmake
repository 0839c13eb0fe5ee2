include(GenerateExportHeader)
include(GNUInstallDirs)

# Flags every velk target gets: warnings, no fused multiply-add (outputs are
# reproducible bit for bit), and the sanitizers when asked for. Kept per target
# so that nothing leaks into a consumer's flags.
function(velk_target_flags target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -ffp-contract=off -fno-fast-math)
    if(VELK_SANITIZE)
        set(_san -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_compile_options(${target} PRIVATE ${_san})
        target_link_options(${target} PRIVATE ${_san})
    endif()
endfunction()

# The shared library itself; subsystems add their sources with velk_add_sources().
function(velk_setup_library)
    add_library(velk SHARED)
    add_library(velk::velk ALIAS velk)
    set_target_properties(velk PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON
        EXPORT_NAME velk)
    target_compile_features(velk PUBLIC cxx_std_17)
    velk_target_flags(velk)
    target_link_libraries(velk PRIVATE m)
    generate_export_header(velk
        BASE_NAME velk
        EXPORT_FILE_NAME "${PROJECT_BINARY_DIR}/include/velk_export.h")
    target_include_directories(velk PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>"
        "$<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/velk>")
    set_property(GLOBAL PROPERTY VELK_PUBLIC_HEADERS
        "${PROJECT_SOURCE_DIR}/include/velk/velk.h"
        "${PROJECT_BINARY_DIR}/include/velk_export.h")
endfunction()

# velk_add_sources(SOURCES a.cpp ... PUBLIC_HEADERS A.h ...)
# Headers beside the sources are public when listed here and private otherwise.
function(velk_add_sources)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_HEADERS" ${ARGN})
    target_sources(velk PRIVATE ${ARG_SOURCES} ${ARG_PUBLIC_HEADERS})
    target_include_directories(velk PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>")
    foreach(h IN LISTS ARG_PUBLIC_HEADERS)
        set_property(GLOBAL APPEND PROPERTY VELK_PUBLIC_HEADERS "${CMAKE_CURRENT_SOURCE_DIR}/${h}")
    endforeach()
endfunction()
