# TAVRO_DEVICE_ROOT: what all fixed paths of the device begin with.
#
# Empty, as shipped, they are the device's own paths, constants of the library. A build for a desktop
# has a folder there, so that nothing a developer runs touches their real root, or "user": the folder
# "tavro" of the user's data folder, whoever that is. Programs of such a build take another root from
# the environment variable of the same name.
#
# Log-out hands these paths to the shell, which is why a prefix that the shell would not take as one
# plain word is refused: here for the build, in platform/device_root for the environment.
set(TAVRO_DEVICE_ROOT "" CACHE STRING
    "Prefix of the device's fixed paths: empty on a device, a folder, or user for each user's own")

set(TAVRO_EACH_USERS_OWN user)

# Besides letters and digits, what a shell takes as it stands.
set(TAVRO_PLAIN_PUNCTUATION "_./+@:,=-")
string(REGEX REPLACE "/+$" "" TAVRO_DEVICE_ROOT_PREFIX "${TAVRO_DEVICE_ROOT}")
if(NOT TAVRO_DEVICE_ROOT STREQUAL "" AND NOT TAVRO_DEVICE_ROOT STREQUAL TAVRO_EACH_USERS_OWN AND
   (NOT TAVRO_DEVICE_ROOT_PREFIX MATCHES "^/[A-Za-z0-9${TAVRO_PLAIN_PUNCTUATION}]+$" OR
    TAVRO_DEVICE_ROOT_PREFIX MATCHES "/[.][.](/|$)"))
    message(FATAL_ERROR
        "TAVRO_DEVICE_ROOT is \"${TAVRO_DEVICE_ROOT}\". It must be empty, \"user\" for each user's "
        "own device, or an absolute path below / of letters, digits and _ . / + @ : , = - only, without \"..\", "
        "because log-out hands it to the shell. Move the build to a folder without blanks or shell "
        "characters in its path.")
endif()
