#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

/// `words` as the system wants the arguments of a program. They lie in `words`.
std::vector<char*> argumentsOf(Words& words);

/// Starts the program `words[0]` with the arguments behind it. A standard stream in `files` is the
/// file there: read if it is the input, written anew otherwise.
pid_t start(Words words, const std::map<int, std::string>& files = {});

/// Waits until `process`, or with -1 any child, has ended. @return its exit status, or minus the
/// signal that ended it.
int statusOf(pid_t process);

/// Runs `action` with the numbers 0 to `count` - 1 in processes of their own, all at once, and
/// expects that none of them finds a failure.
void inProcesses(int count, const std::function<void(int)>& action);
