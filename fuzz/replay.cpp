// SPDX-License-Identifier: MIT
// Runs a fuzzer's entry point over saved inputs: the files of the folders given, and a few inputs that need no file. For
// compilers without a fuzzing engine, and for the tests.
#include <QByteArray>
#include <QDirIterator>
#include <QFile>

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace
{
void run(const QByteArray &input)
{
    // A copy of the exact size, so that the address sanitizer sees a read behind its end.
    const QByteArray exact(input.constData(), input.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(exact.constData()), std::size_t(exact.size()));
}
}

int main(int argc, char *argv[])
{
    int inputs = 0;
    for (int size = 0; size < 40; ++size) {
        for (const char fill : {'\0', '\xFF', 'A'}) {
            run(QByteArray(size, fill));
            ++inputs;
        }
    }
    for (int i = 1; i < argc; ++i) {
        QDirIterator folder(QString::fromLocal8Bit(argv[i]), QDir::Files);
        while (folder.hasNext()) {
            QFile file(folder.next());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            run(file.readAll());
            ++inputs;
        }
    }
    std::printf("%d inputs\n", inputs);
    return 0;
}
