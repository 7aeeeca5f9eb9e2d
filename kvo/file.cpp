#include "kvo/file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace kvo {

namespace {

constexpr std::size_t readSize = 64 * 1024;

class CReadFile final : public IFile
{
public:
    explicit CReadFile(const QString& path)
        : m_file(path)
    {}
    bool Open() { return m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered); }

private:
    std::size_t Read(char* data, std::size_t count) override
    {
        return std::max<qint64>(m_file.read(data, count), 0);
    }
    void Write(const char*, std::size_t) override {}

    QFile m_file;
};

class CWriteFile final : public IFile
{
public:
    explicit CWriteFile(const QString& path)
        : m_file(path)
    {
        m_file.setDirectWriteFallback(true);
    }
    ~CWriteFile() override
    {
        if (m_whole && m_file.flush())
            m_file.commit();
    }
    bool Open() { return m_whole = m_file.open(QIODevice::WriteOnly); }

private:
    std::size_t Read(char*, std::size_t) override { return 0; }
    void Write(const char* data, std::size_t count) override
    {
        m_whole = m_whole && m_file.write(data, count) == qint64(count);
    }

    QSaveFile m_file;
    bool m_whole = false; // a file that lacks some of what was written is dropped
};

template <typename File>
std::unique_ptr<IFile> Opened(const QString& path)
{
    auto file = std::make_unique<File>(path);
    return file->Open() ? std::move(file) : nullptr;
}

class CFileSystem final : public IFileSystem
{
    std::unique_ptr<IFile> Open(const std::string& path, int mode) override
    {
        const QFileInfo info(QString::fromStdString(path));
        if (mode == OpenForReading && info.isFile())
            return Opened<CReadFile>(info.filePath());
        if (mode == OpenForWriting && !path.empty() && (info.isFile() || !info.exists()))
            return Opened<CWriteFile>(info.filePath());
        return nullptr;
    }
};

} // namespace

bool IFile::ReadAhead()
{
    m_ahead.erase(0, std::exchange(m_next, 0));
    const std::size_t kept = m_ahead.size();
    m_ahead.resize(kept + std::max(kept, readSize)); // doubling, for buffers of any size
    const std::size_t count = Read(m_ahead.data() + kept, m_ahead.size() - kept);
    m_ahead.resize(kept + count);
    m_ahead.erase(std::remove(m_ahead.begin() + kept, m_ahead.end(), '\0'), m_ahead.end());
    return count > 0;
}

bool IFile::GetLine(char* buffer, int size)
{
    if (size < 2)
        return false;
    // A line that fills the buffer is whole only if its line end, two bytes at most, is seen too.
    const std::size_t longest = size - 1;
    std::string_view line;
    std::size_t lineFeed;
    for (bool more = true;; more = ReadAhead()) {
        line = std::string_view(m_ahead).substr(m_next, longest + 2);
        lineFeed = line.find('\n');
        if (lineFeed != line.npos || line.size() == longest + 2 || !more)
            break;
    }
    if (line.empty())
        return false;
    std::size_t length = std::min(lineFeed, line.size());
    if (lineFeed != line.npos && length > 0 && line[length - 1] == '\r')
        --length;
    const bool whole = lineFeed != line.npos && length <= longest;
    length = std::min(length, longest);
    m_next += whole ? lineFeed + 1 : length;
    buffer[line.copy(buffer, length)] = '\0';
    return true;
}

void IFile::WriteString(const char* text)
{
    Write(text, std::strlen(text));
}

void IFile::WriteBytes(const void* data, std::uint32_t count)
{
    Write(static_cast<const char*>(data), count);
}

std::unique_ptr<CMemFile> CMemFile::Create()
{
    return std::make_unique<CMemFile>();
}

std::size_t CMemFile::Read(char* data, std::size_t count)
{
    const std::size_t copied = m_bytes.copy(data, count, m_read);
    m_read += copied;
    return copied;
}

void CMemFile::Write(const char* data, std::size_t count)
{
    m_bytes.append(data, count);
}

IFileSystem* fileSystem()
{
    static CFileSystem instance;
    return &instance;
}

} // namespace kvo
