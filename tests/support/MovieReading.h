#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <cstring>
#include <vector>

/// What FFmpeg's programs, which share nothing with the writer of a movie, find in it.
namespace tavrine::test {

struct ProgramOutput {
    int exitCode = -1;
    QByteArray output;
    QByteArray complaints;
};

[[nodiscard]] inline ProgramOutput runProgram(const QString &program, const QStringList &arguments,
                                              int longestMs = 30'000) {
    QProcess process;
    process.start(program, arguments);
    const bool isEnded = process.waitForFinished(longestMs);
    return {isEnded && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

/// The streams that stand in a movie, the picture first; empty when it is none.
[[nodiscard]] inline QList<QJsonObject> streamsOf(const QString &path) {
    const auto probe =
        runProgram(QStringLiteral("ffprobe"),
                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_frames"),
                    QStringLiteral("-show_streams"), QStringLiteral("-of"), QStringLiteral("json"), path});
    QList<QJsonObject> streams;
    for (const QJsonValue &stream : QJsonDocument::fromJson(probe.output).object()[QLatin1String("streams")].toArray())
        streams.append(stream.toObject());
    return streams;
}

/// The moments of a stream's packets, in seconds, how long they last, and their bytes.
struct PacketTime {
    double start = 0;
    double duration = 0;
    bool isKey = false;
    qint64 bytes = 0;
};
[[nodiscard]] inline std::vector<PacketTime> packetsOf(const QString &path, const char *stream = "v") {
    const auto probe = runProgram(QStringLiteral("ffprobe"),
                                  {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-select_streams"),
                                   QString::fromLatin1(stream), QStringLiteral("-show_packets"), QStringLiteral("-of"),
                                   QStringLiteral("json"), path});
    std::vector<PacketTime> packets;
    for (const QJsonValue &value : QJsonDocument::fromJson(probe.output).object()[QLatin1String("packets")].toArray()) {
        const QJsonObject packet = value.toObject();
        packets.push_back({packet[QLatin1String("pts_time")].toString().toDouble(),
                           packet[QLatin1String("duration_time")].toString().toDouble(),
                           packet[QLatin1String("flags")].toString().startsWith(QLatin1Char('K')),
                           packet[QLatin1String("size")].toString().toLongLong()});
    }
    return packets;
}

/// Bits a second of its packets over so many seconds.
[[nodiscard]] inline double bitRateOf(const std::vector<PacketTime> &packets, double seconds) {
    double bytes = 0;
    for (const PacketTime &packet : packets)
        bytes += double(packet.bytes);
    return bytes * 8 / seconds;
}

/// Every picture and every sound of it can be decoded, without a complaint.
[[nodiscard]] inline QByteArray complaintsAbout(const QString &path) {
    const auto decoding = runProgram(QStringLiteral("ffmpeg"),
                                     {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-xerror"),
                                      QStringLiteral("-i"), path, QStringLiteral("-vsync"), QStringLiteral("vfr"),
                                      QStringLiteral("-f"), QStringLiteral("null"), QStringLiteral("-")});
    return decoding.exitCode == 0 ? decoding.complaints : decoding.complaints + " (failed)";
}

/// Its pictures as three bytes a pixel, red first, by a conversion that takes its time.
[[nodiscard]] inline QByteArray pixelsOf(const QString &path) {
    return runProgram(QStringLiteral("ffmpeg"),
                      {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                       QStringLiteral("-vsync"), QStringLiteral("passthrough"), QStringLiteral("-sws_flags"),
                       QStringLiteral("accurate_rnd+full_chroma_int"), QStringLiteral("-pix_fmt"),
                       QStringLiteral("rgb24"), QStringLiteral("-f"), QStringLiteral("rawvideo"), QStringLiteral("-")})
        .output;
}

/// Its sound, as it would be heard: of the left one of its channels, 0, or of the right one, 1.
[[nodiscard]] inline std::vector<float> soundOf(const QString &path, int channel = 0) {
    const QByteArray bytes =
        runProgram(QStringLiteral("ffmpeg"),
                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path, QStringLiteral("-map"),
                    QStringLiteral("0:a"), QStringLiteral("-af"), QStringLiteral("pan=mono|c0=c%1").arg(channel),
                    QStringLiteral("-f"), QStringLiteral("f32le"), QStringLiteral("-")})
            .output;
    std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}

/// The types of the outermost boxes, in order.
[[nodiscard]] inline QList<QByteArray> boxesOf(const QByteArray &movie) {
    QList<QByteArray> types;
    const auto number = [&movie](qsizetype at, int length) {
        quint64 value = 0;
        for (int i = 0; i < length; ++i)
            value = value << 8 | static_cast<unsigned char>(movie[at + i]);
        return value;
    };
    for (qsizetype at = 0; at + 8 <= movie.size();) {
        quint64 length = number(at, 4);
        if (length == 1 && at + 16 <= movie.size())
            length = number(at + 8, 8);
        types.append(movie.mid(at + 4, 4));
        if (length < 8 || length > quint64(movie.size() - at))
            return types << "broken";
        at += qsizetype(length);
    }
    return types;
}
[[nodiscard]] inline QList<QByteArray> boxesOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? boxesOf(file.readAll()) : QList<QByteArray>();
}

} // namespace tavrine::test
