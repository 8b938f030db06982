# Debian packages of the components, made by `cpack` in the build folder.

# 1. For which machine? A cross compiler's answer counts, not this machine's.
set(architectures ^x86_64 amd64 ^i.86 i386 ^aarch64 arm64 "^arm.*hf$" armhf ^arm armel)
while(architectures)
    list(POP_FRONT architectures pattern architecture)
    if(CMAKE_LIBRARY_ARCHITECTURE MATCHES "${pattern}")
        set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${architecture})
        break()
    endif()
endwhile()

# 2. What every package has.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "Tavro")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Tavro developers <tavro@reader.example>")
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

# 3. What each is. On a device (an empty device root) the applications and the platform libraries
#    are the device's own, and so there is no desktop package.
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each description has its own first line
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtavro)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "client library of the Tavro cloud book service
Connects an e-book reader to the service: registers the device, logs in,
fetches the catalogue, downloads books and sends changed ones back.

The library needs the two platform libraries of the reader. A desktop has
stand-ins of them in the package tavro-desktop.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtavro-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libtavro (= ${PROJECT_VERSION}), libcurl4-openssl-dev | libcurl-dev, libexpat1-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "client library of the Tavro cloud book service (headers)
What applications of the library are built with: its headers, a CMake
package and a file for pkg-config.")
if(CMAKE_CROSSCOMPILING)  # whose libraries this machine's package system does not know
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
        "libc6, libcurl4, libexpat1, libgcc-s1, libstdc++6")
else()
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
endif()
if(TARGET tavro-device-check AND NOT TAVRO_DEVICE_ROOT_PREFIX)
    list(APPEND CPACK_COMPONENTS_ALL check)
    set(CPACK_DEBIAN_CHECK_PACKAGE_NAME tavro-device-check)
    set(CPACK_DEBIAN_CHECK_PACKAGE_SECTION utils)
    set(CPACK_DEBIAN_CHECK_PACKAGE_DEPENDS "libtavro (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_CHECK_DESCRIPTION "check of a device for the Tavro library
Tells on an e-book reader whether libtavro works there: its libraries, the
calls of the platform, the file system, the fixed paths and, if asked to, the
service.")
endif()
if(TAVRO_DEVICE_ROOT_PREFIX AND TARGET tavroctl)
    list(APPEND CPACK_COMPONENTS_ALL desktop)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS tavro-desktop)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS tavro-desktop)
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME tavro-desktop)
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_SECTION utils)
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "libtavro (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_DESKTOP_DESCRIPTION "Tavro cloud book service on a desktop
A local service for books of your own, the command-line tool tavroctl, the
reader's synchronisation and login applications, and stand-ins of the
reader's platform libraries.

Each user has a device in the own data folder, and others on request; see
tavroctl(1).")
    if(CMAKE_CROSSCOMPILING)
        set(CPACK_DEBIAN_DESKTOP_PACKAGE_SHLIBDEPS OFF)
        string(APPEND CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS ", libcpp-httplib0.11, libcrypt1, "
            "libpng16-16, libpugixml1v5, libsqlite3-0, libturbojpeg0, libxxhash0, libzip4")
    endif()
endif()

# 4. The papers that every package carries.
find_program(TAVRO_GZIP gzip REQUIRED)
set(changelog ${PROJECT_BINARY_DIR}/package/changelog.gz)
add_custom_command(OUTPUT ${changelog} VERBATIM DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog
    COMMAND ${TAVRO_GZIP} -9nc ${PROJECT_SOURCE_DIR}/packaging/changelog > ${changelog})
add_custom_target(package_papers ALL DEPENDS ${changelog})
foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} upper)
    install(FILES packaging/copyright ${changelog} COMPONENT ${component}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
endforeach()

include(CPack)
