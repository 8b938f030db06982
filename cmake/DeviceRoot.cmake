# TAVRO_DEVICE_ROOT: what all fixed paths of the device begin with.
#
# Empty, as shipped, they are the device's own paths. A build for a desktop puts a folder of its
# build tree there, so that nothing a developer runs touches their real root. Log-out hands these
# paths to the shell, which is why a prefix that the shell would not take as one plain word is
# refused.
set(TAVRO_DEVICE_ROOT "" CACHE STRING "Prefix of the device's fixed paths (empty on a device)")

# Besides letters and digits, what a shell takes as it stands.
set(TAVRO_PLAIN_PUNCTUATION "_./+@:,=-")
string(REGEX REPLACE "/+$" "" TAVRO_DEVICE_ROOT_PREFIX "${TAVRO_DEVICE_ROOT}")
if(NOT TAVRO_DEVICE_ROOT STREQUAL "" AND
   NOT TAVRO_DEVICE_ROOT_PREFIX MATCHES "^/[A-Za-z0-9${TAVRO_PLAIN_PUNCTUATION}]+$")
    message(FATAL_ERROR
        "TAVRO_DEVICE_ROOT is \"${TAVRO_DEVICE_ROOT}\". It must be empty or an absolute path below "
        "/ of letters, digits and _ . / + @ : , = - only, because log-out hands it to the shell. "
        "Move the build to a folder without blanks or shell characters in its path.")
endif()
