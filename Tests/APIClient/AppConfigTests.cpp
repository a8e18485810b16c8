#include "AppConfig.h"
#include "Support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <gmock/gmock.h>

namespace orvia::test {
namespace {

using namespace Qt::StringLiterals;

const QUrl fallback(u"https://fallback.example"_s);

TEST(AcceptedBaseURL, IsTheEntryOnlyWhereItIsAnHTTPAddress)
{
    for (const QString& entry : {u"https://chat.example"_s, u"http://127.0.0.1:8080/base?x=1"_s})
        EXPECT_EQ(AppConfig::acceptedBaseURL(entry, fallback), QUrl(entry));
    for (const QVariant& entry :
         {QVariant(), QVariant(QStringList{u"https://a.example"_s, u"https://b.example"_s}),
          QVariant(u"$(API_BASE_URL)"_s), QVariant(u"HTTPS://chat.example"_s),
          QVariant(u"ftp://chat.example"_s), QVariant(u"chat.example"_s),
          QVariant(u" https://chat.example"_s), QVariant(u"https://chat.example:port"_s)})
        EXPECT_EQ(AppConfig::acceptedBaseURL(entry, fallback), fallback) << entry.toString().toStdString();
}

void write(const QString& file, const QByteArray& content)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(content);
}

/// The origin is worked out once in a process, so every case asks a fresh one: a death test's child.
class Configuration : public testing::Test {
protected:
    Configuration() { testing::GTEST_FLAG(death_test_style) = "fast"; }

    ~Configuration() override
    {
        QFile::remove(userFile);
        QFile::remove(systemFile);
    }

    /// Expects a fresh process to find @p origin.
    void expectOrigin(const QByteArray& origin, const QString& chosenFile = {})
    {
        const auto child = [&] {
            if (!chosenFile.isEmpty())
                AppConfig::setConfigurationFile(chosenFile);
            const QByteArray found = AppConfig::apiBaseURL().toEncoded();
            AppConfig::setConfigurationFile(u"/nowhere"_s);
            std::fprintf(stderr, "%s|%s\n", found.constData(),
                         AppConfig::apiBaseURL().toEncoded() == found ? "kept" : "changed");
            std::_Exit(0);
        };
        EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^" + origin.toStdString() + "\\|kept");
    }

    QString userFile = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/orvia/orvia.conf"_s;
    QString systemFile = qEnvironmentVariable("XDG_CONFIG_DIRS") + u"/orvia/orvia.conf"_s;
};

TEST_F(Configuration, ComesFromTheUserThenTheSystemThenTheBuild)
{
    expectOrigin("https://chat.tessaly.example");
    write(systemFile, "APIBaseURL=https://system.example\n");
    expectOrigin("https://system.example");
    write(userFile, "Other=1\n");
    expectOrigin("https://system.example");
    write(userFile, "APIBaseURL=http://user.example:8080\n");
    expectOrigin("http://user.example:8080");
    write(userFile, "APIBaseURL=$(ORIGIN)\n");
    expectOrigin("https://chat.tessaly.example");

    // A chosen file stands alone.
    write(userFile, "APIBaseURL=https://user.example\n");
    const QString chosen = qEnvironmentVariable("HOME") + u"/chosen.conf"_s;
    write(chosen, "APIBaseURL=https://chosen.example/path\n");
    expectOrigin("https://chosen.example/path", chosen);
    write(chosen, "; nothing\n");
    expectOrigin("https://chat.tessaly.example", chosen);
}

} // namespace
} // namespace orvia::test
