include(GenerateExportHeader)
include(GNUInstallDirs)

# The sanitizer flags of the sanitize, tsan and fuzz builds, kept in one place.
set(VELK_SANITIZER_FLAGS_address -fsanitize=address,undefined -fno-sanitize-recover=all
                                 -fno-omit-frame-pointer)
set(VELK_SANITIZER_FLAGS_thread -fsanitize=thread -fno-omit-frame-pointer)

# Flags every velk target gets: warnings, no fused multiply-add (outputs are
# reproducible bit for bit), and the sanitizers when asked for. Kept per target
# so that nothing leaks into a consumer's flags.
function(velk_target_flags target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -ffp-contract=off -fno-fast-math)
    # Build paths stay out of the binaries, so two checkouts build the same bytes.
    target_compile_options(${target} PRIVATE
        "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=.")
    if(VELK_SANITIZE)
        set(_san ${VELK_SANITIZER_FLAGS_${VELK_SANITIZE}})
        target_compile_options(${target} PRIVATE ${_san})
        target_link_options(${target} PRIVATE ${_san})
    endif()
endfunction()

# The library is made of one object library per subsystem; velk (shared, the
# one consumers link) and velk_internal (static, for tests and the Python
# module) are both linked from the same objects.
# velk_subsystem(<name> SOURCES a.cpp ... [USES <lower subsystems>...])
# Headers beside the sources are private to the library; a subsystem sees the
# private headers of the subsystems it USES and no others.
function(velk_subsystem name)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    set(target velk_${name})
    add_library(${target} OBJECT ${ARG_SOURCES})
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_compile_definitions(${target} PRIVATE velk_EXPORTS)
    target_include_directories(${target} PUBLIC
        "${CMAKE_CURRENT_SOURCE_DIR}"
        "${PROJECT_SOURCE_DIR}/include"
        "${PROJECT_BINARY_DIR}/include")
    foreach(lower IN LISTS ARG_USES)
        target_link_libraries(${target} PUBLIC velk_${lower})
    endforeach()
    velk_target_flags(${target})
    set_property(GLOBAL APPEND PROPERTY VELK_SUBSYSTEMS ${name})
endfunction()

# Links the subsystems' objects into the two libraries.
function(velk_link_library)
    get_property(subsystems GLOBAL PROPERTY VELK_SUBSYSTEMS)
    set(objects "")
    foreach(name IN LISTS subsystems)
        list(APPEND objects $<TARGET_OBJECTS:velk_${name}>)
    endforeach()

    add_library(velk SHARED ${objects})
    add_library(velk::velk ALIAS velk)
    set_target_properties(velk PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        EXPORT_NAME velk)
    generate_export_header(velk
        BASE_NAME velk
        EXPORT_FILE_NAME "${PROJECT_BINARY_DIR}/include/velk/velk_export.h")
    target_compile_features(velk PUBLIC cxx_std_17)
    target_include_directories(velk PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>"
        "$<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    target_link_libraries(velk PRIVATE m Threads::Threads)
    velk_target_flags(velk)

    # Not installed: the same library with every subsystem's private headers
    # visible, for the tests, and statically linkable into the Python module.
    # Linking an object library adds its objects and its include paths.
    add_library(velk_internal STATIC)
    foreach(name IN LISTS subsystems)
        target_link_libraries(velk_internal PUBLIC velk_${name})
    endforeach()
    target_link_libraries(velk_internal PUBLIC m Threads::Threads)
    velk_target_flags(velk_internal)
endfunction()
