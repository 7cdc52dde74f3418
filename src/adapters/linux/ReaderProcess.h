#pragma once

#include "base/Descriptor.h"
#include "ports/CodeDetector.h"
#include "ports/Recognizer.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <stop_token>
#include <variant>

namespace tavrine {

/// Runs TavrineReader, which reads one picture with one plugin and ends. Any thread, and several at a time; waits for
/// the answer.
///
/// Pictures come from anywhere and the libraries that read them are large: what crashes there or never ends costs an
/// answer and not the program, and the memory that they take is given back with the process.
class ReaderProcess {
public:
    /// `program` is TavrineReader's file; `plugin` the plugin's name. An answer that takes longer is none, and the
    /// process is killed.
    ReaderProcess(QString program, QString plugin, std::chrono::milliseconds longest);

    struct Failure {
        QString reason;
    };
    [[nodiscard]] std::variant<Failure, QByteArray> read(const QImage &image, std::stop_token stop = {}) const;

    /// The answers that are waited for now, and every later one, are failures at once; the processes are killed. So is
    /// the one call's whose `stop` is requested.
    void cancel();

private:
    QString m_program;
    QString m_plugin;
    std::chrono::milliseconds m_longest;
    Descriptor m_cancelled; ///< readable from the cancelling on
};

/// Text, by a process of its own for each picture.
class ProcessRecognizer final : public Recognizer {
public:
    static constexpr std::chrono::seconds longest{60}; // a dense 4K screen takes a tenth of it
    /// `programFolder` is where this program's own file stands.
    explicit ProcessRecognizer(const QString &programFolder, std::chrono::milliseconds patience = longest);
    using Recognizer::recognize;
    [[nodiscard]] Result recognize(const QImage &image, std::stop_token stop) override;
    void cancel() override { m_reader.cancel(); }

private:
    ReaderProcess m_reader;
};

/// Codes, likewise.
class ProcessCodeDetector final : public CodeDetector {
public:
    static constexpr std::chrono::seconds longest{20};
    static constexpr auto screenPlugin = "screen_code_detector";   ///< for what is found on the screen
    static constexpr auto picturePlugin = "picture_code_detector"; ///< for the editor
    ProcessCodeDetector(const QString &programFolder, const char *plugin, std::chrono::milliseconds patience = longest);
    using CodeDetector::detect;
    [[nodiscard]] Result detect(const QImage &image, std::stop_token stop) override;
    void cancel() override { m_reader.cancel(); }

private:
    ReaderProcess m_reader;
};

} // namespace tavrine
