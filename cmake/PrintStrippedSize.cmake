# Strips LIBRARY with STRIP into STRIPPED and prints its size: what an installation takes on a device.
# LIMIT, unless 0, is the most bytes that it may be.
get_filename_component(folder ${STRIPPED} DIRECTORY)
file(MAKE_DIRECTORY ${folder})
execute_process(COMMAND ${STRIP} -o ${STRIPPED} ${LIBRARY} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${STRIPPED} size)
get_filename_component(name ${LIBRARY} NAME)
message(STATUS "${name}: ${size} bytes stripped")
if(LIMIT AND size GREATER LIMIT)
    message(FATAL_ERROR "${name} may have ${LIMIT} bytes: space is short on a device. "
        "Another compiler than ours may need TAVRO_DEVICE_CHECKS=OFF.")
endif()
