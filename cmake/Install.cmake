# What `cmake --install` lays down, by component: runtime (the library, all that a device needs),
# check (the program that checks a device), development (what applications are built with) and desktop
# (tools, applications and stand-ins).
include(CMakePackageConfigHelpers)

# The stand-ins and the applications lie in a folder of their own, so that no other package's
# library is hidden by a stand-in. Everything finds everything from where it lies itself.
set(private_folder ${CMAKE_INSTALL_LIBDIR}/tavro)
file(RELATIVE_PATH bin_to_libraries /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})

# install_target(target component folder search-path...): installs `target` if the build has it.
function(install_target target component folder)
    if(NOT TARGET ${target})
        return()
    endif()
    get_target_property(imported ${target} IMPORTED)
    if(imported)  # the device's own library: it is there already
        return()
    endif()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${ARGN}")
    install(TARGETS ${target} DESTINATION ${folder} COMPONENT ${component})
endfunction()

# 1. The library.
install_target(tavro runtime ${CMAKE_INSTALL_LIBDIR})
if(NOT CMAKE_CROSSCOMPILING)  # a device has the platform libraries among its own
    set_target_properties(tavro PROPERTIES INSTALL_RPATH "$ORIGIN/tavro")
endif()

# 2. What applications are built with. The CMake package and libtavro.pc name folders from where
#    they lie, so that the installed tree may be moved.
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tavro)
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkg_config_to_prefix /${pkg_config_folder} /)
string(REGEX REPLACE "/$" "" pkg_config_to_prefix ${pkg_config_to_prefix})
configure_package_config_file(cmake/tavro-config.cmake.in package/tavro-config.cmake
    INSTALL_DESTINATION ${config_folder}
    PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/tavro-config-version.cmake
    COMPATIBILITY SameMinorVersion)
configure_file(cmake/libtavro.pc.in package/libtavro.pc @ONLY)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavro COMPONENT development
    FILES_MATCHING PATTERN *.h)
install(FILES ${PROJECT_BINARY_DIR}/package/tavro-config.cmake
              ${PROJECT_BINARY_DIR}/package/tavro-config-version.cmake
    DESTINATION ${config_folder} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/package/libtavro.pc
    DESTINATION ${pkg_config_folder} COMPONENT development)

# 3. The desktop: stand-ins with their headers, tools, applications.
install(DIRECTORY platform/include/ platform/host/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavro/platform COMPONENT desktop
    FILES_MATCHING PATTERN *.h)
foreach(target tavro_lectern tavro_core_utils)
    install_target(${target} desktop ${private_folder})
endforeach()
foreach(target tavroctl tavro-service)
    install_target(${target} desktop ${CMAKE_INSTALL_BINDIR}
        "$ORIGIN/${bin_to_libraries}" "$ORIGIN/${bin_to_libraries}/tavro")
endforeach()
if(TARGET tavroctl)  # which links the applications to where the library starts them
    target_compile_definitions(tavroctl PRIVATE TAVRO_PRIVATE_FOLDER="${bin_to_libraries}/tavro")
endif()
foreach(target tavro_sync tavro_wizard)
    install_target(${target} desktop ${private_folder} "$ORIGIN/.." "$ORIGIN")
endforeach()

# 4. The check of a device. Its two parts find each other in one folder as well.
install_target(tavro-device-check check ${CMAKE_INSTALL_BINDIR}
    "$ORIGIN" "$ORIGIN/${bin_to_libraries}" "$ORIGIN/${bin_to_libraries}/tavro")
install_target(tavro_device_check_module check ${private_folder} "$ORIGIN" "$ORIGIN/..")

# 5. Manual pages and shell completion of the programs.
find_program(TAVRO_GZIP gzip REQUIRED)

# install_page(program component): its manual page, with the programs of the component.
function(install_page program component)
    set(source ${PROJECT_SOURCE_DIR}/docs/man/${program}.1)
    set(compressed ${PROJECT_BINARY_DIR}/package/${program}.1.gz)
    add_custom_command(OUTPUT ${compressed} DEPENDS ${source} VERBATIM
        COMMAND ${TAVRO_GZIP} -9nc ${source} > ${compressed})
    add_custom_target(manual_page_of_${program} ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()

if(TARGET tavro-device-check)
    install_page(tavro-device-check check)
endif()
if(TARGET tavroctl)
    foreach(program tavroctl tavro-service tavro_sync.app tavro_wizard.app)
        install_page(${program} desktop)
    endforeach()
    foreach(program tavroctl tavro-service)
        install(FILES packaging/${program}.bash RENAME ${program} COMPONENT desktop
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    endforeach()
endif()
