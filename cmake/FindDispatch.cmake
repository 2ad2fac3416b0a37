# SPDX-License-Identifier: Apache-2.0
# Finds libdispatch, the engine under our queues.
#
# Looks, in this order, at CMAKE_PREFIX_PATH and the system's paths, at the toolchain of a `swift` on the PATH,
# and at .deps/dispatch in this tree, which scripts/setup fills where the system has no package of it. A copy
# counts only if it lets a foreign run loop serve the main queue, as ours does: two functions that it exports but
# does not declare in its headers.
#
# Defines the target Dispatch::Dispatch, and Dispatch_IS_PRIVATE where the copy is the one in our tree.

include(CheckCXXSourceCompiles)
include(FindPackageHandleStandardArgs)

set(_dispatchPrivatePrefix ${CMAKE_CURRENT_LIST_DIR}/../.deps/dispatch)
cmake_path(NORMAL_PATH _dispatchPrivatePrefix)

function(_dispatch_probe include library result)
    string(MD5 hash "${include} ${library}")
    set(CMAKE_REQUIRED_QUIET ON)
    set(CMAKE_REQUIRED_INCLUDES ${include})
    set(CMAKE_REQUIRED_LIBRARIES ${library})
    check_cxx_source_compiles([[
        extern "C" int _dispatch_get_main_queue_handle_4CF(void);
        extern "C" void _dispatch_main_queue_callback_4CF(void*);
        int main() {
            _dispatch_main_queue_callback_4CF(nullptr);
            return _dispatch_get_main_queue_handle_4CF();
        }
    ]] Dispatch_SERVES_RUN_LOOPS_${hash})
    set(${result} ${Dispatch_SERVES_RUN_LOOPS_${hash}} PARENT_SCOPE)
endfunction()

# Accepts the first copy that the given find_path and find_library options lead to, if it passes the probe.
macro(_dispatch_try)
    if(NOT Dispatch_LIBRARY)
        find_path(_dispatchInclude dispatch/dispatch.h PATH_SUFFIXES include lib/swift NO_CACHE ${ARGN})
        find_library(_dispatchLibrary dispatch PATH_SUFFIXES lib lib/swift/linux swift/linux NO_CACHE ${ARGN})
        if(_dispatchInclude AND _dispatchLibrary)
            _dispatch_probe(${_dispatchInclude} ${_dispatchLibrary} _dispatchServes)
            if(_dispatchServes)
                set(Dispatch_INCLUDE_DIR ${_dispatchInclude} CACHE PATH "Where dispatch/dispatch.h is")
                set(Dispatch_LIBRARY ${_dispatchLibrary} CACHE FILEPATH "libdispatch")
            else()
                message(STATUS "Passing over ${_dispatchLibrary}: no run loop can serve its main queue")
            endif()
        endif()
        unset(_dispatchInclude)
        unset(_dispatchLibrary)
    endif()
endmacro()

_dispatch_try()
find_program(_dispatchSwift swift NO_CACHE)
if(_dispatchSwift)
    file(REAL_PATH ${_dispatchSwift} _dispatchSwift)
    cmake_path(GET _dispatchSwift PARENT_PATH _dispatchSwift)
    cmake_path(GET _dispatchSwift PARENT_PATH _dispatchSwift)
    _dispatch_try(PATHS ${_dispatchSwift} NO_DEFAULT_PATH)
endif()
_dispatch_try(PATHS ${_dispatchPrivatePrefix} NO_DEFAULT_PATH)

find_package_handle_standard_args(Dispatch
    REQUIRED_VARS Dispatch_LIBRARY Dispatch_INCLUDE_DIR
    REASON_FAILURE_MESSAGE "libdispatch was not found: run scripts/setup, or set CMAKE_PREFIX_PATH to a copy")

if(Dispatch_FOUND)
    cmake_path(IS_PREFIX _dispatchPrivatePrefix ${Dispatch_LIBRARY} NORMALIZE Dispatch_IS_PRIVATE)
    if(NOT TARGET Dispatch::Dispatch)
        find_package(Threads REQUIRED)
        add_library(Dispatch::Dispatch SHARED IMPORTED)
        set_target_properties(Dispatch::Dispatch PROPERTIES
            IMPORTED_LOCATION ${Dispatch_LIBRARY}
            IMPORTED_NO_SONAME OFF
            INTERFACE_INCLUDE_DIRECTORIES ${Dispatch_INCLUDE_DIR}
            INTERFACE_LINK_LIBRARIES Threads::Threads)
    endif()
endif()
mark_as_advanced(Dispatch_LIBRARY Dispatch_INCLUDE_DIR)
