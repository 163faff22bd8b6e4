// Output files written by a thread of the library's own: the stream fills
// a large buffer and hands it over whole, and the copy into the kernel's
// cache happens on the other processor while the caller goes on.

#ifndef TARN_SUPPORT_ASYNC_FILE_H
#define TARN_SUPPORT_ASYNC_FILE_H

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>

// The buffer of an async_ofstream. Bytes reach the file in the order they
// were put, whole buffers as they fill and the rest at the close. A flush
// marks the place up to which the bytes are owed to the file but hands
// nothing over (writers that end every line with one would otherwise wait
// for the thread at every line): when the process exits with the file
// open, the bytes up to the last flush are written and those put after it
// are lost, as with a plain file stream. The first failing write ends the
// writing: its errno is kept, later puts fail, and sync() and close()
// report it (setting errno to it).
struct async_writer;

class async_filebuf : public std::streambuf {
public:
    async_filebuf();
    ~async_filebuf() override;
    async_filebuf(const async_filebuf&) = delete;
    async_filebuf& operator=(const async_filebuf&) = delete;

    // Creates or truncates `path` for writing, as a plain file stream's
    // out | trunc does; false when it cannot (errno says why) or when a
    // file is open already.
    bool open(const std::string& path);
    bool is_open() const { return fd >= 0; }
    // Writes what is buffered and waits until it is in the file; false
    // when a write failed.
    bool write_buffered();
    // The same up to the last flush, dropping what was put after it.
    bool write_flushed();
    // Writes what is buffered, waits, closes. False when nothing was open,
    // when a write failed or the close did.
    bool close();

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* s, std::streamsize n) override;
    int sync() override;

private:
    friend struct async_writer;
    // The open files, for the exit, and what the thread did of this one's
    // chunks: all under the thread's lock.
    async_filebuf* next_open = nullptr;
    async_filebuf* previous_open = nullptr;
    std::size_t chunks_handed = 0;
    std::size_t chunks_done = 0;
    int error = 0; // errno of the first failed write

    // Gives the filled part of the buffer to the thread and takes an empty
    // buffer; false once the writing has failed.
    bool hand_over();
    // Waits until every chunk handed over is written; false if one failed.
    bool wait_written();

    int fd = -1;
    char* chunk = nullptr;
    char* flushed_at = nullptr;
};

// A std::ostream on an async_filebuf, with the open/close surface of a plain
// output file stream: failbit when the open or the close fails.
class async_ofstream : public std::ostream {
public:
    async_ofstream();
    explicit async_ofstream(const std::string& path);
    ~async_ofstream() override;

    void open(const std::string& path);
    bool is_open() const { return buf.is_open(); }
    void close();

private:
    async_filebuf buf;
};

#endif
