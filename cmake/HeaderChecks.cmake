# SPDX-License-Identifier: Apache-2.0
# Compiles every public header by itself, and sees nothing but the standard library and our public headers: so a host
# may include any of them, alone and in any order, whatever else it has installed.

option(VORLAN_CHECK_HEADERS "Compile every public header by itself" OFF)

if(VORLAN_CHECK_HEADERS)
    file(GLOB_RECURSE _headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/include
        ${PROJECT_SOURCE_DIR}/include/*.h)
    if(NOT _headers)
        message(FATAL_ERROR "There are no public headers to check")
    endif()
    set(_sources)
    foreach(_header IN LISTS _headers)
        set(_source ${PROJECT_BINARY_DIR}/headers/${_header}.cpp)
        file(CONFIGURE OUTPUT ${_source} CONTENT "#include <${_header}>\n")
        list(APPEND _sources ${_source})
    endforeach()
    add_library(VorlanFoundationHeaderChecks OBJECT ${_sources})
    target_include_directories(VorlanFoundationHeaderChecks PRIVATE ${PROJECT_SOURCE_DIR}/include)
    vorlan_set_compile_options(VorlanFoundationHeaderChecks)
endif()
