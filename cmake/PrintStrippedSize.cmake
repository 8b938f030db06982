# Strips LIBRARY with STRIP into STRIPPED and prints its size: what an installation takes on a device.
get_filename_component(folder ${STRIPPED} DIRECTORY)
file(MAKE_DIRECTORY ${folder})
execute_process(COMMAND ${STRIP} -o ${STRIPPED} ${LIBRARY} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${STRIPPED} size)
get_filename_component(name ${LIBRARY} NAME)
message(STATUS "${name}: ${size} bytes stripped")
