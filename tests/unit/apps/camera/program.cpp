#include "program.h"

#include "support/gate.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcessEnvironment>

namespace ostrel::tests {

namespace {

const int HANG_MS = 110000;

void prepare(QProcess& process, const QString& folder) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("OSTREL", OSTREL_CAMERA_PROGRAM);
    environment.insert("LC_ALL", "C.UTF-8");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
}

} // namespace

void start(QProcess& process, const QString& folder, const QStringList& arguments) {
    prepare(process, folder);
    process.start(OSTREL_CAMERA_PROGRAM, arguments);
    process.waitForStarted();
}

Outcome finish(QProcess& process) {
    if (!process.waitForFinished(HANG_MS)) {
        process.kill();
        process.waitForFinished();
    }
    Outcome outcome;
    outcome.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    outcome.output = process.readAllStandardOutput();
    outcome.errors = process.readAllStandardError().toStdString();
    return outcome;
}

Outcome run(const QString& folder, const QStringList& arguments, const QByteArray& input) {
    QProcess process;
    start(process, folder, arguments);
    process.write(input);
    process.closeWriteChannel();
    return finish(process);
}

Outcome runShell(const QString& folder, const QString& script) {
    QProcess process;
    prepare(process, folder);
    process.start("/bin/sh", {"-c", script});
    process.closeWriteChannel();
    return finish(process);
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool grows(const QString& path, qint64 bytes) {
    return support::comesTrue([&] { return QFileInfo(path).size() >= bytes; });
}

QStringList Folder::entries() const {
    return QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

} // namespace ostrel::tests
