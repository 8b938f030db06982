# Tests that qemu-arm cannot run; CTest lists them as disabled.

# The emulated posix_spawn gives the child a copy of the memory instead of sharing it, so the child
# cannot tell that it failed to start the program.
set_tests_properties(Platform.ApplicationThatCannotStartIsReported PROPERTIES DISABLED TRUE)

# 'tavroctl setup' links the device's application to a foreign program, which needs an emulator.
set_tests_properties(BrowserCommands.DevicesLieSideBySide PROPERTIES DISABLED TRUE)
