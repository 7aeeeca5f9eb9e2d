#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace kvo {

// A file of bytes, read by line and written in sequence; used by one thread at a time.
// Destroying it closes it, and everything written before is then in the file.
class IFile
{
public:
    virtual ~IFile() = default;
    IFile(const IFile&) = delete;
    IFile& operator=(const IFile&) = delete;

    // Reads the next line without its line end (LF or CR LF) into `buffer`, NUL-terminated.
    // A line of `size` bytes or more comes in pieces of size - 1 bytes, one a call. NUL bytes of
    // the file are left out. False, with the buffer untouched, when no line is left, after a
    // read error, and for a size below 2.
    bool GetLine(char* buffer, int size);

    // Writes the text without its terminating NUL.
    void WriteString(const char* text);
    void WriteBytes(const void* data, std::uint32_t count);

protected:
    IFile() = default;

    // Reads up to `count` bytes and returns how many; 0 at the end, after an error and when the
    // file is not open for reading.
    virtual std::size_t Read(char* data, std::size_t count) = 0;
    // Writes all bytes; a failure is the file's own to handle.
    virtual void Write(const char* data, std::size_t count) = 0;

private:
    bool ReadAhead();

    std::string m_ahead;    // read from the file, without its NUL bytes
    std::size_t m_next = 0; // where in m_ahead the next line begins
};

// A file in memory that grows as it is written; lines are read from its beginning.
class CMemFile final : public IFile
{
public:
    // An empty memory file; never null.
    static std::unique_ptr<CMemFile> Create();

    // The first byte of the contents; never null, valid until the next write.
    const char* data() const { return m_bytes.data(); }
    std::uint32_t size() const { return static_cast<std::uint32_t>(m_bytes.size()); }

private:
    std::size_t Read(char* data, std::size_t count) override;
    void Write(const char* data, std::size_t count) override;

    std::string m_bytes;
    std::size_t m_read = 0;
};

// The bits of an open mode, and the two modes that IFileSystem::Open knows.
inline constexpr int OpenRead = 0x02;
inline constexpr int OpenWrite = 0x08;
inline constexpr int OpenExisting = 0x10;
inline constexpr int OpenReplace = 0x20;
inline constexpr int OpenForReading = OpenRead | OpenExisting;
inline constexpr int OpenForWriting = OpenWrite | OpenReplace;

// The files on disk.
class IFileSystem
{
public:
    // Opens the file at the UTF-8 `path`; null on failure, for any other mode, and for what is
    // not a regular file (a folder, a pipe, a device).
    // OpenForReading: the file must exist.
    // OpenForWriting: the file is created, or its contents replaced, as the returned file is
    // destroyed; when a write has failed it then stays as it was. Only where the folder allows
    // no new file is an existing one emptied at once and written in place.
    virtual std::unique_ptr<IFile> Open(const std::string& path, int mode) = 0;

protected:
    ~IFileSystem() = default;
};

// The process-wide file system, not the caller's to delete; callable from any thread.
IFileSystem* fileSystem();

} // namespace kvo
