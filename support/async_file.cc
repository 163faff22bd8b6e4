#include "support/async_file.h"
#include "support/helper_thread.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace {

constexpr std::size_t kChunk = std::size_t(1) << 20;
// Chunks of one file handed over and not yet written: enough to keep the
// thread busy, few enough that a fast producer waits rather than piles up.
constexpr std::size_t kInFlight = 4;
constexpr std::size_t kQueue = 64;
constexpr std::size_t kSpare = 8;

struct job {
    async_filebuf* owner;
    int fd;
    char* data;
    std::size_t length;
};

// Everything below is guarded by `lock`. Plain statics with static
// initialisers: nothing here is destroyed at exit while the thread may
// still be waiting on it.
pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t work = PTHREAD_COND_INITIALIZER; // a job was queued
pthread_cond_t done = PTHREAD_COND_INITIALIZER; // a job was written
job queue[kQueue];
std::size_t queue_head = 0, queue_size = 0;
// Written chunks, linked through their first bytes. Only the caller's
// thread takes memory or gives it back (the program's heap serves one
// thread); the writer only links what it is done with.
char* free_chunks = nullptr;
std::size_t free_count = 0;
async_filebuf* open_files = nullptr;
enum class writer_state { not_started, running, gone };
writer_state writer = writer_state::not_started;
pid_t writer_pid = 0; // a forked child has no writer

// The whole of `length` bytes, or the errno of the failure.
int write_all(int fd, const char* data, std::size_t length)
{
    while (length > 0) {
        ssize_t n = ::write(fd, data, length);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (n == 0)
            return EIO;
        data += n;
        length -= static_cast<std::size_t>(n);
    }
    return 0;
}

char* take_chunk_locked()
{
    char* c = free_chunks;
    if (c != nullptr) {
        std::memcpy(&free_chunks, c, sizeof free_chunks);
        --free_count;
    }
    return c;
}

void give_chunk_locked(char* c)
{
    std::memcpy(c, &free_chunks, sizeof free_chunks);
    free_chunks = c;
    ++free_count;
}

// The caller's thread: keeps a few written chunks for the next files.
void trim_chunks_locked()
{
    while (free_count > kSpare)
        delete[] take_chunk_locked();
}

} // namespace

// The thread and the exit hook: the parts of the library that read the
// files' private counts.
struct async_writer {
    static void* write_jobs(void*);
    static void write_open_files_at_exit();
};

void* async_writer::write_jobs(void*)
{
    pthread_mutex_lock(&lock);
    for (;;) {
        while (queue_size == 0)
            pthread_cond_wait(&work, &lock);
        job j = queue[queue_head];
        queue_head = (queue_head + 1) % kQueue;
        --queue_size;
        // After a failure the file's later chunks are dropped, as a
        // stream stops writing at its first error.
        bool failed_before = j.owner->error != 0;
        pthread_mutex_unlock(&lock);
        int err = failed_before ? 0 : write_all(j.fd, j.data, j.length);
        pthread_mutex_lock(&lock);
        if (err != 0 && j.owner->error == 0)
            j.owner->error = err;
        ++j.owner->chunks_done;
        give_chunk_locked(j.data);
        pthread_cond_broadcast(&done);
    }
    return nullptr;
}

namespace {

// Under the lock: whether chunks go to the thread; starts it the first time.
bool writer_here_locked()
{
    if (writer == writer_state::not_started) {
        writer = start_helper_thread(async_writer::write_jobs) ? writer_state::running : writer_state::gone;
        writer_pid = getpid();
    }
    return writer == writer_state::running && writer_pid == getpid();
}

} // namespace

void async_writer::write_open_files_at_exit()
{
    // Only the exiting thread runs the program's code now; each write takes
    // the lock itself. What was put after a file's last flush is dropped.
    pthread_mutex_lock(&lock);
    async_filebuf* f = open_files;
    pthread_mutex_unlock(&lock);
    while (f != nullptr) {
        pthread_mutex_lock(&lock);
        async_filebuf* next = f->next_open;
        pthread_mutex_unlock(&lock);
        f->write_flushed();
        f = next;
    }
}

async_filebuf::async_filebuf() = default;

async_filebuf::~async_filebuf()
{
    if (is_open())
        close();
}

bool async_filebuf::open(const std::string& path)
{
    if (is_open())
        return false;
    fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    static bool exit_hooked = false;
    if (!exit_hooked)
        exit_hooked = std::atexit(async_writer::write_open_files_at_exit) == 0;
    pthread_mutex_lock(&lock);
    error = 0;
    chunks_handed = chunks_done = 0;
    previous_open = nullptr;
    next_open = open_files;
    if (open_files != nullptr)
        open_files->previous_open = this;
    open_files = this;
    pthread_mutex_unlock(&lock);
    return true;
}

bool async_filebuf::hand_over()
{
    std::size_t length = chunk != nullptr ? static_cast<std::size_t>(pptr() - pbase()) : 0;
    flushed_at = nullptr;
    pthread_mutex_lock(&lock);
    if (error != 0) {
        pthread_mutex_unlock(&lock);
        setp(chunk, chunk != nullptr ? chunk + kChunk : nullptr);
        return false;
    }
    if (length > 0) {
        if (writer_here_locked()) {
            while (chunks_handed - chunks_done >= kInFlight || queue_size == kQueue)
                pthread_cond_wait(&done, &lock);
            queue[(queue_head + queue_size) % kQueue] = {this, fd, chunk, length};
            ++queue_size;
            ++chunks_handed;
            pthread_cond_signal(&work);
            chunk = take_chunk_locked();
        } else {
            // No thread: the caller writes, as a plain stream would.
            pthread_mutex_unlock(&lock);
            int err = write_all(fd, chunk, length);
            pthread_mutex_lock(&lock);
            if (err != 0)
                error = err;
        }
    }
    if (chunk == nullptr)
        chunk = take_chunk_locked();
    bool ok = error == 0;
    pthread_mutex_unlock(&lock);
    if (chunk == nullptr)
        chunk = new char[kChunk];
    setp(chunk, chunk + kChunk);
    return ok;
}

bool async_filebuf::wait_written()
{
    pthread_mutex_lock(&lock);
    if (writer == writer_state::running && writer_pid == getpid())
        while (chunks_done != chunks_handed)
            pthread_cond_wait(&done, &lock);
    int err = error;
    pthread_mutex_unlock(&lock);
    if (err != 0)
        errno = err;
    return err == 0;
}

async_filebuf::int_type async_filebuf::overflow(int_type c)
{
    if (!is_open() || !hand_over())
        return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    *pptr() = traits_type::to_char_type(c);
    pbump(1);
    return c;
}

std::streamsize async_filebuf::xsputn(const char* s, std::streamsize n)
{
    std::streamsize put = 0;
    while (put < n) {
        if (pptr() == epptr() && (!is_open() || !hand_over()))
            break;
        std::streamsize room = epptr() - pptr();
        std::streamsize piece = n - put < room ? n - put : room;
        std::memcpy(pptr(), s + put, static_cast<std::size_t>(piece));
        pbump(static_cast<int>(piece));
        put += piece;
    }
    return put;
}

int async_filebuf::sync()
{
    if (!is_open())
        return 0;
    if (chunk != nullptr)
        flushed_at = pptr();
    pthread_mutex_lock(&lock);
    int err = error;
    pthread_mutex_unlock(&lock);
    if (err == 0)
        return 0;
    errno = err;
    return -1;
}

bool async_filebuf::write_flushed()
{
    if (chunk != nullptr)
        pbump(-static_cast<int>(pptr() - (flushed_at != nullptr ? flushed_at : pbase())));
    return write_buffered();
}

bool async_filebuf::write_buffered()
{
    bool handed = chunk == nullptr || hand_over();
    return wait_written() && handed;
}

bool async_filebuf::close()
{
    if (!is_open())
        return false;
    bool ok = write_buffered();
    int err = ok ? 0 : errno;
    if (::close(fd) != 0 && ok) {
        ok = false;
        err = errno;
    }
    pthread_mutex_lock(&lock);
    if (previous_open != nullptr)
        previous_open->next_open = next_open;
    else
        open_files = next_open;
    if (next_open != nullptr)
        next_open->previous_open = previous_open;
    next_open = previous_open = nullptr;
    if (chunk != nullptr)
        give_chunk_locked(chunk);
    trim_chunks_locked();
    pthread_mutex_unlock(&lock);
    chunk = nullptr;
    setp(nullptr, nullptr);
    fd = -1;
    if (!ok)
        errno = err;
    return ok;
}

async_ofstream::async_ofstream() : std::ostream(nullptr)
{
    rdbuf(&buf);
}

async_ofstream::async_ofstream(const std::string& path) : async_ofstream()
{
    open(path);
}

async_ofstream::~async_ofstream() = default;

void async_ofstream::open(const std::string& path)
{
    if (buf.open(path))
        clear();
    else
        setstate(std::ios::failbit);
}

void async_ofstream::close()
{
    if (!buf.close())
        setstate(std::ios::failbit);
}
