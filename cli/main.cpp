// SPDX-License-Identifier: MIT
#include "cli/commandline.h"
#include "cli/interrupt.h"
#include "persist/filesync.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <unistd.h>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillary-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLARY_VERSION));
    // The debug log is the window's; QT_LOGGING_RULES brings it back.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    cli::noticeInterrupts();
    surviveFileSizeLimit();

    QFile standardOutput;
    QFile standardError;
    if (!standardOutput.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered)
        || !standardError.open(STDERR_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered))
        return cli::Failed;
    QTextStream out(&standardOutput);
    QTextStream err(&standardError);
    out.setCodec("UTF-8");
    err.setCodec("UTF-8");

    int status = cli::run(QCoreApplication::arguments(), out, err);
    out.flush();
    if (out.status() != QTextStream::Ok) {
        err << "quillary-cli: Cannot write to standard output: " << standardOutput.errorString() << '\n';
        status = cli::Failed;
    }
    err.flush();
    if (cli::interrupted() && status == cli::Failed)
        cli::endByInterrupt();
    return status;
}
