#include "kvo/file.h"

#include "kvo/regularfile.h"

#include <QSaveFile>

#include <algorithm>
#include <cstring>

namespace kvo {

namespace {

class CWriteFile final : public IFile
{
public:
    explicit CWriteFile(std::unique_ptr<QSaveFile> file)
        : m_file(std::move(file))
    {}
    ~CWriteFile() override { m_file->commit(); }

private:
    std::string_view Contents() const override { return {}; }
    void Write(const char* data, std::size_t count) override
    {
        if (m_file->write(data, qint64(count)) != qint64(count))
            m_file->cancelWriting();
    }

    const std::unique_ptr<QSaveFile> m_file;
};

class CFileSystem final : public IFileSystem
{
    std::unique_ptr<IFile> Open(const std::string& path, int mode) override
    {
        if (mode == openForReading) {
            if (const auto bytes = ReadWhole(path))
                return std::make_unique<CMemFile>(bytes->toStdString());
        } else if (mode == openForWriting) {
            if (auto file = OpenReplacement(path))
                return std::make_unique<CWriteFile>(std::move(file));
        }
        return nullptr;
    }
};

} // namespace

bool IFile::GetLine(char* buffer, int size)
{
    if (size < 2)
        return false;
    // A line that fills the buffer is whole only if its line end, two bytes at most, is seen too.
    const std::size_t longest = size - 1;
    const std::string_view line = Contents().substr(m_next, longest + 2);
    if (line.empty())
        return false;
    const std::size_t lineFeed = line.find('\n');
    std::size_t length = std::min(lineFeed, line.size());
    if (lineFeed != line.npos && length > 0 && line[length - 1] == '\r')
        --length;
    const bool whole = lineFeed != line.npos && length <= longest;
    length = std::min(length, longest);
    m_next += whole ? lineFeed + 1 : length;
    *std::remove_copy(line.begin(), line.begin() + length, buffer, '\0') = '\0';
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

IFileSystem* fileSystem()
{
    static CFileSystem instance;
    return &instance;
}

} // namespace kvo
