# SPDX-License-Identifier: Apache-2.0
# How everything of ours is compiled: warnings, sanitizers, coverage, precompiled headers.

option(VORLAN_WARNINGS_AS_ERRORS "Stop at warnings; for working on the library, not for installing it" OFF)
option(VORLAN_COVERAGE "Measure which lines the tests reach" OFF)
option(VORLAN_PRECOMPILE_HEADERS "Compile common headers once for all; hides that an include is missing" OFF)
set(VORLAN_TEST_OPTIONS "" CACHE STRING "Compiler options that the tests get after those of the library")
set(VORLAN_SANITIZE "" CACHE STRING "Sanitizers to build everything with: address,undefined or thread")

if(VORLAN_SANITIZE)
    # Everything that ends up in one process must agree on these, so they are not left to single targets.
    add_compile_options(-fsanitize=${VORLAN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VORLAN_SANITIZE})
endif()
if(VORLAN_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
endif()

function(vorlan_set_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
        -Wextra-semi -Wunused -Wformat=2 -Wimplicit-fallthrough
        # What is not named in a designated initialiser is left at its default, and that is the point of it.
        -Wno-missing-field-initializers)
    if(VORLAN_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -Wduplicated-cond -Wduplicated-branches -Wlogical-op)
        # Version 12 sees overlapping copies in std::string's own code when it optimises.
        target_compile_options(${target} PRIVATE -Wno-restrict)
        if(VORLAN_SANITIZE)
            # The instrumented code hides initialisations from the analysis behind this warning.
            target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
        endif()
    else()
        target_compile_options(${target} PRIVATE -Wthread-safety)
    endif()
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
endfunction()

# Has a target's sources begin with the standard's headers and the given ones, read once for all of them. Not among
# them is <filesystem>, which brings std::quoted: what we call quoted() would be that of a text.
function(vorlan_precompile_headers target)
    if(VORLAN_PRECOMPILE_HEADERS)
        target_precompile_headers(${target} PRIVATE
            <algorithm> <array> <atomic> <charconv> <chrono> <cmath> <condition_variable> <cstdint> <functional>
            <limits> <map> <memory> <mutex> <optional> <set> <span> <sstream> <stdexcept> <string> <string_view>
            <thread> <unordered_map> <utility> <variant> <vector> ${ARGN})
    endif()
endfunction()
