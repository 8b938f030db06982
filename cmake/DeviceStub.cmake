# tavro_link_with_stub(target library name version): compiles target with the headers of the library
# target `library`, but links it with a stub of the soname libNAME.so.VERSION that has the calls which
# NAME_calls.txt lists, and no other.
#
# A distribution gives the symbols of its libcurl version names of its own, which a device's does not
# have; the stub's have none. And a call that a device's may lack must not slip in: what is not on the
# list fails to link. Who links with target gets the library itself.
function(tavro_link_with_stub target library name version)
    # 1. Its code.
    set(list ${CMAKE_CURRENT_SOURCE_DIR}/${name}_calls.txt)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
    file(STRINGS ${list} calls)
    set(code "")
    foreach(call ${calls})
        string(APPEND code "void ${call}(void);\nvoid ${call}(void) {}\n")
    endforeach()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}_stub.c)
    file(CONFIGURE OUTPUT ${source} CONTENT "@code@" @ONLY)
    # 2. The stub.
    set(stub ${target}_${name}_stub)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/stubs)
    add_library(${stub} SHARED ${source})
    set_target_properties(${stub} PROPERTIES
        OUTPUT_NAME ${name}
        SOVERSION ${version}
        C_VISIBILITY_PRESET default
        LIBRARY_OUTPUT_DIRECTORY ${folder})
    # 3. Its user. Were it linked as a target, programs would look for libraries in its folder.
    add_dependencies(${target} ${stub})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS $<TARGET_FILE:${stub}>)
    target_link_libraries(${target}
        INTERFACE ${library}
        PRIVATE -l:lib${name}.so.${version})
    target_link_directories(${target} PRIVATE ${folder})
    target_include_directories(${target} SYSTEM PRIVATE
        $<TARGET_PROPERTY:${library},INTERFACE_INCLUDE_DIRECTORIES>)
endfunction()
