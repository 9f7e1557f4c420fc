#include "video.h"

#include <QtCore/QProcess>
#include <QtCore/QStringList>

namespace ostrel::tests {

namespace {

struct Answer {
    QByteArray output;
    QByteArray errors;
};

Answer ask(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.closeWriteChannel();
    process.waitForFinished(110000);
    return {process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

Video readVideo(const QString& path) {
    Video video;
    const QStringList entries = {"-v", "error", "-of", "csv"};
    const Answer facts = ask("ffprobe", entries + QStringList{"-show_entries",
                                                              "packet=pts_time:stream=width,height:format="
                                                              "duration",
                                                              path});
    for (const QByteArray& line : facts.output.split('\n')) {
        const QList<QByteArray> values = line.trimmed().split(',');
        if (values[0] == "packet")
            video.times.push_back(values.value(1).toDouble());
        if (values[0] == "stream") {
            video.width = values.value(1).toInt();
            video.height = values.value(2).toInt();
        }
        if (values[0] == "format" && values.value(1) != "N/A")
            video.duration = values.value(1).toDouble();
    }
    video.pictures = ask("ffmpeg", {"-v", "error", "-i", path, "-c", "copy", "-f", "mjpeg", "-"}).output;
    // In the times of a rate that it guesses two frames may have the same.
    const Answer decoding = ask("ffmpeg", {"-v", "error", "-progress", "-", "-i", path, "-vsync",
                                           "passthrough", "-enc_time_base", "-1", "-f", "null", "-"});
    video.errors = decoding.errors;
    const QByteArray last = decoding.output.mid(decoding.output.lastIndexOf("frame="));
    video.decoded = last.mid(6, last.indexOf('\n') - 6).trimmed().toInt();
    return video;
}

} // namespace ostrel::tests
