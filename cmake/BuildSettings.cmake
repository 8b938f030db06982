# Settings that every target of the project shares.
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
# Log lines name their source place; it must not depend on where the build lies.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # The plain file interface of a 32-bit machine fails on large files and large inode numbers.
    add_compile_definitions(_FILE_OFFSET_BITS=64)
endif()
if(NOT TAVRO_SANITIZE)
    # As a distribution hardens its packages; scripts/hardening looks whether it is so.
    set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    add_compile_options($<${optimised}:-fstack-protector-strong>
                        $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
    add_link_options($<${optimised}:LINKER:-z,relro,-z,now>)
endif()
if(CMAKE_CROSSCOMPILING)
    # Our libraries, which go to a device, must not say where they look for others. So programs,
    # which are run in the build folder, do that for them: a RUNPATH would not.
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:LINKER:--disable-new-dtags>)
endif()
if(TAVRO_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()
if(TAVRO_SANITIZE)
    add_compile_options(-fsanitize=${TAVRO_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TAVRO_SANITIZE})
endif()

# tavro_optimise_for_device(target): compiles target, which becomes part of the library, so that what
# nothing reaches can be left out, and on a device for size; on ARM in its short instructions, which
# compilers for soft float do not choose by themselves.
function(tavro_optimise_for_device target)
    target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Os>)
    endif()
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
        target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-mthumb>)
    endif()
endfunction()
