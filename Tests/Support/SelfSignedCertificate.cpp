#include "Support/SelfSignedCertificate.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

QSslConfiguration selfSignedConfiguration()
{
    static const QSslConfiguration made = [] {
        const QTemporaryDir directory;
        const QString keyFile = directory.filePath(u"key.pem"_s);
        const QString certificateFile = directory.filePath(u"certificate.pem"_s);
        QProcess openssl;
        openssl.start(u"openssl"_s,
                      {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-keyout"_s, keyFile,
                       u"-out"_s, certificateFile, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=127.0.0.1"_s,
                       u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s});
        EXPECT_TRUE(openssl.waitForFinished() && openssl.exitCode() == 0)
            << openssl.errorString().toStdString() << openssl.readAllStandardError().constData();
        QFile key(keyFile);
        EXPECT_TRUE(key.open(QIODevice::ReadOnly));
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setPrivateKey(QSslKey(&key, QSsl::Rsa));
        configuration.setLocalCertificate(QSslCertificate::fromPath(certificateFile).value(0));
        return configuration;
    }();
    return made;
}

} // namespace orvia::test
