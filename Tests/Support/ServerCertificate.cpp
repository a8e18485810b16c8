#include "Support/ServerCertificate.h"

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

/// One key and its certificates in files, as the command line tool makes them.
class Workshop {
public:
    Workshop()
    {
        run({u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-keyout"_s, file(u"key"_s),
             u"-out"_s, file(u"authority"_s), u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=Authority"_s});
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.addCaCertificate(QSslCertificate::fromPath(file(u"authority"_s)).value(0));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }

    QSslConfiguration configuration(Certificate kind) const
    {
        const QString host = kind == Certificate::otherHost ? u"127.0.0.9"_s : u"127.0.0.1"_s;
        const QStringList subject{u"-subj"_s, u"/CN="_s + host, u"-addext"_s, u"subjectAltName=IP:"_s + host};
        if (kind == Certificate::selfSigned) {
            run(QStringList{u"req"_s, u"-x509"_s, u"-key"_s, file(u"key"_s), u"-out"_s, file(u"server"_s),
                            u"-days"_s, u"2"_s}
                + subject);
        } else {
            run(QStringList{u"req"_s, u"-new"_s, u"-key"_s, file(u"key"_s), u"-out"_s, file(u"request"_s)}
                + subject);
            run({u"x509"_s, u"-req"_s, u"-in"_s, file(u"request"_s), u"-copy_extensions"_s, u"copy"_s,
                 u"-CA"_s, file(u"authority"_s), u"-CAkey"_s, file(u"key"_s), u"-set_serial"_s,
                 QString::number(1 + static_cast<int>(kind)), u"-out"_s, file(u"server"_s), u"-days"_s,
                 kind == Certificate::expired ? u"-1"_s : u"2"_s});
        }
        QFile key(file(u"key"_s));
        EXPECT_TRUE(key.open(QIODevice::ReadOnly));
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setPrivateKey(QSslKey(&key, QSsl::Rsa));
        configuration.setLocalCertificate(QSslCertificate::fromPath(file(u"server"_s)).value(0));
        return configuration;
    }

private:
    QString file(const QString& name) const { return m_directory.filePath(name + u".pem"_s); }

    static void run(const QStringList& arguments)
    {
        QProcess openssl;
        openssl.start(u"openssl"_s, arguments);
        EXPECT_TRUE(openssl.waitForFinished() && openssl.exitCode() == 0)
            << openssl.errorString().toStdString() << openssl.readAllStandardError().constData();
    }

    QTemporaryDir m_directory;
};

} // namespace

QSslConfiguration serverConfiguration(Certificate certificate)
{
    static const Workshop workshop;
    static QHash<Certificate, QSslConfiguration> made;
    if (!made.contains(certificate))
        made.insert(certificate, workshop.configuration(certificate));
    return made.value(certificate);
}

} // namespace orvia::test
