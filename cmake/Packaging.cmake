# SPDX-License-Identifier: Apache-2.0
# What is installed, and how other projects find it: as a CMake package, and through pkg-config.

include(CMakePackageConfigHelpers)

set(_packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/VorlanFoundation)

install(TARGETS VorlanFoundation EXPORT VorlanFoundationTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development)
install(TARGETS VorlanFoundationTesting EXPORT VorlanFoundationTestingTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Testing)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/VorlanFoundation DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT Development FILES_MATCHING PATTERN *.h PATTERN Testing EXCLUDE PATTERN Testing.h EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/VorlanFoundation/Testing
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/VorlanFoundation
    COMPONENT Testing FILES_MATCHING PATTERN *.h)
install(FILES ${PROJECT_SOURCE_DIR}/include/VorlanFoundation/Testing.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/VorlanFoundation COMPONENT Testing)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Runtime)

# A process must have one libdispatch, because there is one main queue: so it is linked as a shared library, never
# into ours, and a host that uses it too shares it by its name. Where it is the copy that scripts/setup built, which
# no system path has, it is installed with us, in a folder of our own, where only our library looks for it and it
# cannot be taken for the system's. A copy found anywhere else stays where it is.
if(Dispatch_IS_PRIVATE)
    cmake_path(GET Dispatch_LIBRARY PARENT_PATH _dispatchFolder)
    cmake_path(GET _dispatchFolder PARENT_PATH _dispatchPrefix)
    file(GLOB _dispatchLibraries ${_dispatchFolder}/libdispatch.so* ${_dispatchFolder}/libBlocksRuntime.so*)
    install(FILES ${_dispatchLibraries} DESTINATION ${CMAKE_INSTALL_LIBDIR}/vorlan-foundation COMPONENT Runtime)
    install(FILES ${_dispatchPrefix}/share/doc/libdispatch/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR}/libdispatch
        COMPONENT Runtime)
    set_target_properties(VorlanFoundation PROPERTIES INSTALL_RPATH $ORIGIN/vorlan-foundation)
else()
    set_target_properties(VorlanFoundation PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
endif()

install(EXPORT VorlanFoundationTargets NAMESPACE VorlanFoundation:: DESTINATION ${_packageFolder}
    COMPONENT Development)
install(EXPORT VorlanFoundationTestingTargets NAMESPACE VorlanFoundation:: DESTINATION ${_packageFolder}
    COMPONENT Testing)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VorlanFoundationConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VorlanFoundationConfig.cmake INSTALL_DESTINATION ${_packageFolder}
    NO_SET_AND_CHECK_MACRO)
# SameMinorVersion, as in the SONAME: 0.2 may differ from 0.1 in anything.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VorlanFoundationConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VorlanFoundationConfig.cmake
    ${PROJECT_BINARY_DIR}/VorlanFoundationConfigVersion.cmake
    DESTINATION ${_packageFolder} COMPONENT Development)

# The .pc file names its folders relative to itself, so that an installed tree may be moved.
set(_pkgconfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE VORLAN_PC_LIBDIR)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE VORLAN_PC_INCLUDEDIR)
configure_file(${CMAKE_CURRENT_LIST_DIR}/vorlan-foundation.pc.in ${PROJECT_BINARY_DIR}/vorlan-foundation.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vorlan-foundation.pc DESTINATION ${_pkgconfigFolder} COMPONENT Development)
