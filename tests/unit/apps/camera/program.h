// Runs the built ostrel-camera, as a user's shell does.
#ifndef OSTREL_TESTS_UNIT_APPS_CAMERA_PROGRAM_H
#define OSTREL_TESTS_UNIT_APPS_CAMERA_PROGRAM_H

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <string>

namespace ostrel::tests {

struct Outcome {
    int code = -1; // exit code; -1 when it crashed or hung
    QByteArray output;
    std::string errors; // standard error
};

// The program in the folder; a hang of two minutes ends it.
Outcome run(const QString& folder, const QStringList& arguments, const QByteArray& input = QByteArray());

// The program behind a shell: "$OSTREL" stands for it.
Outcome runShell(const QString& folder, const QString& script);

// Starts it and returns while it runs.
void start(QProcess& process, const QString& folder, const QStringList& arguments);
// Waits for its end; kills what hangs.
Outcome finish(QProcess& process);

QByteArray readFile(const QString& path);
// Waits until the file has so many bytes; false when it never has.
bool grows(const QString& path, qint64 bytes);

// A picture or a video in a folder that goes away with the test.
class Folder {
public:
    QString path() const { return folder_.path(); }
    QString file(const QString& name) const { return folder_.filePath(name); }
    QByteArray read(const QString& name) const { return readFile(file(name)); }
    QStringList entries() const; // names, sorted

private:
    QTemporaryDir folder_;
};

} // namespace ostrel::tests

#endif
