#include "Input.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

/// The targets without a fuzzing engine: every input of the corpus, once. The build names the targets.
#define ORVIA_TARGET(name) extern "C" int fuzz##name(const uint8_t* data, size_t size);
ORVIA_FUZZ_TARGETS
#undef ORVIA_TARGET

namespace orvia::fuzzing {
namespace {

using namespace Qt::StringLiterals;

struct Target {
    const char* name;
    int (*run)(const uint8_t*, size_t);
};

#define ORVIA_TARGET(name) Target{#name, &fuzz##name},
const Target targets[] = {ORVIA_FUZZ_TARGETS};
#undef ORVIA_TARGET

class Corpus : public testing::TestWithParam<Target> {};

TEST_P(Corpus, KeepsEveryPromise)
{
    const Target& target = GetParam();
    const QDir folder(QStringLiteral(ORVIA_FUZZ_CORPUS "/") + QString::fromLatin1(target.name));
    const QStringList names = folder.entryList(QDir::Files);
    ASSERT_FALSE(names.isEmpty()) << "No inputs in " << qPrintable(folder.path());
    RecordProperty("inputs", static_cast<int>(names.size()));
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
        const QByteArray input = file.readAll();
        try {
            target.run(reinterpret_cast<const uint8_t*>(input.constData()),
                       static_cast<size_t>(input.size()));
        } catch (const BrokenPromise& broken) {
            ADD_FAILURE() << qPrintable(name) << ": " << broken.what();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Fuzzing, Corpus, testing::ValuesIn(targets),
                         [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace orvia::fuzzing
