#include "Platform/PrivateFile.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// A POSIX file descriptor, closed at the end of its life.
class Descriptor {
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    ~Descriptor()
    {
        if (isOpen())
            ::close(m_number);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }

private:
    int m_number;
};

template <typename Call>
auto retryWhenInterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

bool makePrivateDirectory(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    if (::mkdir(name.constData(), S_IRWXU) == 0)
        return true;
    if (errno == ENOENT) {
        const QString parent = QFileInfo(path).path();
        return parent != path && makePrivateDirectory(parent) && ::mkdir(name.constData(), S_IRWXU) == 0;
    }
    return errno == EEXIST && QFileInfo(path).isDir();
}

bool writeWhole(int descriptor, const QByteArray& contents)
{
    qsizetype written = 0;
    while (written < contents.size()) {
        const ssize_t count = retryWhenInterrupted([&] {
            return ::write(descriptor, contents.constData() + written,
                           static_cast<std::size_t>(contents.size() - written));
        });
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

/// A rename outlives a power cut only once its directory has been written too.
void synchronizeDirectory(const QString& path)
{
    const Descriptor directory(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen())
        ::fsync(directory.number());
}

} // namespace

PrivateFile::PrivateFile(QString path)
    : m_path(std::move(path))
{
}

bool PrivateFile::exists() const
{
    struct stat status {};
    return ::lstat(QFile::encodeName(m_path).constData(), &status) == 0;
}

std::optional<QByteArray> PrivateFile::read() const
{
    // Without O_NONBLOCK, opening a named pipe that somebody left in this place would wait for its writer.
    const Descriptor file(
        ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return std::nullopt;
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid() || status.st_size > sizeLimit)
        return std::nullopt;
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        ::fchmod(file.number(), S_IRUSR | S_IWUSR);

    QByteArray contents(static_cast<qsizetype>(sizeLimit) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    while (size < contents.size()) {
        const ssize_t count = retryWhenInterrupted([&] {
            return ::read(file.number(), contents.data() + size,
                          static_cast<std::size_t>(contents.size() - size));
        });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        size += count;
    }
    if (size > sizeLimit)
        return std::nullopt;
    contents.truncate(size);
    return contents;
}

bool PrivateFile::write(const QByteArray& contents) const
{
    const QString directory = QFileInfo(m_path).path();
    if (contents.size() > sizeLimit || !makePrivateDirectory(directory))
        return false;

    // mkostemp creates with mode 0600, so that at no moment anybody else can open the new file.
    QByteArray temporary = QFile::encodeName(m_path) + ".XXXXXX";
    const Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen())
        return false;
    if (writeWhole(file.number(), contents) && ::fsync(file.number()) == 0
        && std::rename(temporary.constData(), QFile::encodeName(m_path).constData()) == 0) {
        synchronizeDirectory(directory);
        return true;
    }
    ::unlink(temporary.constData());
    return false;
}

bool PrivateFile::remove() const
{
    return ::unlink(QFile::encodeName(m_path).constData()) == 0 || errno == ENOENT || errno == ENOTDIR;
}

PrivateFileStorage::PrivateFileStorage(QString directory)
    : m_directory(std::move(directory))
{
}

PrivateFile PrivateFileStorage::file(const QString& service, const QString& account) const
{
    // Encoded names hold no separator, and the added ending keeps "." and ".." from naming a directory.
    const auto encoded = [](const QString& name) {
        return QString::fromLatin1(QUrl::toPercentEncoding(name));
    };
    return PrivateFile(m_directory + u'/' + encoded(service) + ".d/"_L1 + encoded(account) + ".secret"_L1);
}

SecretReading PrivateFileStorage::read(const QString& service, const QString& account)
{
    const PrivateFile secret = file(service, account);
    if (!secret.exists())
        return {SecretStatus::notFound, {}};
    if (std::optional<QByteArray> contents = secret.read())
        return {SecretStatus::success, *std::move(contents)};
    return {SecretStatus::failed, {}};
}

SecretStatus PrivateFileStorage::add(const QByteArray& secret, const QString& service, const QString& account)
{
    return file(service, account).write(secret) ? SecretStatus::success : SecretStatus::failed;
}

SecretStatus PrivateFileStorage::remove(const QString& service, const QString& account)
{
    return file(service, account).remove() ? SecretStatus::success : SecretStatus::failed;
}

} // namespace orvia
