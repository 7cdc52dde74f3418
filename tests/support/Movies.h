#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace tavrine::test {

/// Runs the program that everybody makes movies with.
inline void ffmpeg(const QStringList &arguments) {
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral("ffmpeg"), QStringList{QStringLiteral("-nostdin"), QStringLiteral("-loglevel"),
                                                        QStringLiteral("error"), QStringLiteral("-y")} +
                                                arguments);
    ASSERT_TRUE(program.waitForFinished() && program.exitCode() == 0) << arguments.join(u' ').toStdString();
}

/// Makes a movie at `path`: `picture` and `sound` are sources as the program's filters name them, the latter may be
/// empty; `options` go before the file's name.
inline void makeMovie(const QString &path, const QString &picture, const QString &sound = {},
                      const QStringList &options = {}) {
    QStringList arguments;
    for (const QString &source : {picture, sound})
        if (!source.isEmpty())
            arguments += {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), source};
    if (!options.contains(QStringLiteral("-c:v")))
        arguments +=
            {QStringLiteral("-c:v"), QStringLiteral("libx264"), QStringLiteral("-preset"), QStringLiteral("ultrafast")};
    ffmpeg(arguments + QStringList{QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p")} + options +
           QStringList(path));
}

/// A colour, for as long, at 30 frames a second.
[[nodiscard]] inline QString plain(const QString &color, double seconds,
                                   const QString &size = QStringLiteral("160x90")) {
    return QStringLiteral("color=c=%1:s=%2:r=30:d=%3").arg(color, size).arg(seconds);
}

[[nodiscard]] inline QString tone(double seconds) {
    return QStringLiteral("sine=frequency=440:sample_rate=48000:duration=%1").arg(seconds);
}

} // namespace tavrine::test
