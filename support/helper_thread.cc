#include "support/helper_thread.h"

#include <pthread.h>

#include <cstddef>

bool start_helper_thread(void* (*run)(void*))
{
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0)
        return false;
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attr, std::size_t(64) << 10);
    pthread_t thread;
    bool made = pthread_create(&thread, &attr, run, nullptr) == 0;
    pthread_attr_destroy(&attr);
    return made;
}
