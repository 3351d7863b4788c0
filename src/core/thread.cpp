// SPDX-License-Identifier: Apache-2.0
#include "core/thread.h"

#include <pthread.h>

int start_detached(void *(*body)(void *), void *argument) {
    pthread_attr_t attributes;
    int error = pthread_attr_init(&attributes);
    if (error != 0) return error;
    error = pthread_attr_setstacksize(&attributes, THREAD_STACK_BYTES);
    if (error == 0) error = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    if (error == 0) error = pthread_create(&thread, &attributes, body, argument);
    pthread_attr_destroy(&attributes);
    return error;
}
