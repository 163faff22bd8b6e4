// The support library's own threads: the filler of mapped blocks and the
// writer of output files.

#ifndef TARN_SUPPORT_HELPER_THREAD_H
#define TARN_SUPPORT_HELPER_THREAD_H

// Starts a detached thread running `run(nullptr)` on a small stack; false
// when the system refuses one. Such a thread takes no memory through
// operator new: the program's heap serves its own thread only.
bool start_helper_thread(void* (*run)(void*));

#endif
