#pragma once

namespace posix {

/// Sees that descriptors 0, 1 and 2 are open, on /dev/null where whoever started the program had
/// them closed. Otherwise the next file opened becomes a standard stream, and whatever is printed
/// goes into it. To be called before anything else.
void openStandardStreams();

/// Closes all descriptors above the three standard ones, with the locks that go with them: a
/// program must not hold what whoever started it had open.
void closeInheritedDescriptors();

}  // namespace posix
