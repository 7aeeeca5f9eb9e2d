#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kvo {

// A file of bytes, read by line and written in sequence; used by one thread at a time.
// Destroying it closes it; all that was written is then in the file, or nothing if a write failed.
class IFile
{
public:
    virtual ~IFile() = default;
    IFile(const IFile&) = delete;
    IFile& operator=(const IFile&) = delete;

    // Reads the next line without its line end (LF or CR LF) into `buffer`, NUL-terminated. A CR
    // alone belongs to the line, also at the end of the file.
    // A line of `size` bytes or more comes in pieces of at most size - 1 bytes, one per call. NUL
    // bytes of the file are left out. False, with the buffer untouched, when no line is left, for a
    // file that is open for writing, and for a size below 2.
    bool GetLine(char* buffer, int size);

    void WriteString(const char* text);
    void WriteBytes(const void* data, std::uint32_t count);

protected:
    IFile() = default;

    // All that can be read; it only ever grows.
    virtual std::string_view Contents() const = 0;
    // Writes all bytes; the file itself handles failures.
    virtual void Write(const char* data, std::size_t count) = 0;

private:
    std::size_t m_next = 0; // where the next line begins
};

// A file in memory that grows as it is written; lines are read from its beginning.
class CMemFile final : public IFile
{
public:
    explicit CMemFile(std::string bytes = {})
        : m_bytes(std::move(bytes))
    {}
    // An empty memory file; never null.
    static std::unique_ptr<CMemFile> Create() { return std::make_unique<CMemFile>(); }

    // The first byte of the contents; never null, valid until the next write.
    const char* data() const { return m_bytes.data(); }
    std::uint32_t size() const { return static_cast<std::uint32_t>(m_bytes.size()); }

private:
    std::string_view Contents() const override { return m_bytes; }
    void Write(const char* data, std::size_t count) override { m_bytes.append(data, count); }

    std::string m_bytes;
};

inline constexpr int openForReading = 0x12;
inline constexpr int openForWriting = 0x28;

// The files on disk.
class IFileSystem
{
public:
    // Opens the file at the UTF-8 `path`; null on failure, for any other mode, and for what is
    // not a regular file (a folder, a pipe, a device; for writing also a link).
    // openForReading: the file must exist; it is read into memory, and never written.
    // openForWriting: the file is created or replaced when the returned one is destroyed; it stays
    // as it was if a write failed.
    virtual std::unique_ptr<IFile> Open(const std::string& path, int mode) = 0;

protected:
    ~IFileSystem() = default;
};

// The process-wide file system, which the caller does not own; callable from any thread.
IFileSystem* fileSystem();

} // namespace kvo
