// g_process_pid, kept right in forked children.

#include <pthread.h>
#include <unistd.h>

#include "core_utils.h"

namespace {

int followProcess() {
    pthread_atfork(nullptr, nullptr, [] { g_process_pid = getpid(); });
    return getpid();
}

}  // namespace

int g_process_pid = followProcess();
