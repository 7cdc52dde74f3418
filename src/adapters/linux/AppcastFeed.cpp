#include "adapters/linux/AppcastFeed.h"

#include "adapters/linux/FeedProtocol.h"
#include "adapters/linux/HelperProcess.h"
#include "base/PrivateFiles.h"
#include "ports/Downloads.h"

#include <QFile>
#include <QObject>

#include <utility>

#include <gnu/libc-version.h>

namespace tavrine {
namespace {

using Answer = UpdateFeed::Answer;

/// A megabyte is looked at within milliseconds.
constexpr std::chrono::seconds longestLook{10};

/// Fetches the feed into a file without a name, and has it looked at there. What it answers with is read from the same
/// file before that look: nobody else has it.
class FeedQuestion final : public QObject, public UpdateFeed::Question {
public:
    FeedQuestion(const AppcastFeed::Parts &parts, std::function<void(const Answer &)> answered)
        : m_program(parts.programs + QStringLiteral("/TavrineFeedVerifier")), m_keys(parts.keys),
          m_path(parts.temporary + QStringLiteral("/update-feed.xml")), m_answered(std::move(answered)) {
        makePrivateFolder(parts.temporary);
        m_download = parts.downloads.downloadTask(
            parts.address, m_path,
            {.didWriteData = {},
             .didFinishDownloading = [this](DownloadedFile &file) { take(file); },
             .didComplete = [this](const QString &error) { error.isEmpty() ? verify() : answer({}); }},
            {.schemes = DownloadBounds::Schemes::secure, .mostBytes = UpdateFeed::mostBytes});
        m_download->resume();
    }

private:
    /// The file has its name for as long as it takes to open it.
    void take(DownloadedFile &file) {
        if (!file.moveToDestination())
            return;
        m_file.setFileName(m_path);
        QFile contents(m_path);
        if (m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && contents.open(QIODevice::ReadOnly))
            m_contents = contents.read(UpdateFeed::mostBytes);
        QFile::remove(m_path);
    }

    void verify() {
        if (!m_file.isOpen())
            return answer({});
        m_verifier = std::make_unique<HelperProcess>(
            HelperProcess::Start{
                .program = m_program, .arguments = m_keys, .file = m_file.handle(), .longestSilence = longestLook},
            HelperProcess::Handlers{.line = [this](const std::string &line) { hear(line); },
                                    .ended = [this](const QString &) { answer({}); }});
    }

    /// Who says anything else makes no sense.
    void hear(const std::string &line) {
        if (line == feedProtocol::good)
            answer({Answer::Kind::contents, m_contents});
        else
            answer({line == feedProtocol::refused ? Answer::Kind::refused : Answer::Kind::noAnswer});
    }

    void answer(const Answer &answer) {
        if (const auto answered = std::exchange(m_answered, nullptr))
            answered(answer); // and with that, most likely, this is gone
    }

    QString m_program;
    QStringList m_keys;
    QString m_path;
    std::function<void(const Answer &)> m_answered;
    std::unique_ptr<DownloadTask> m_download;
    QFile m_file; ///< for the verifier
    QByteArray m_contents;
    std::unique_ptr<HelperProcess> m_verifier;
};

} // namespace

std::unique_ptr<UpdateFeed::Question> AppcastFeed::fetch(std::function<void(const Answer &)> answered) {
    return std::make_unique<FeedQuestion>(m_parts, std::move(answered));
}

QString AppcastFeed::systemVersion() const {
    return QString::fromLatin1(gnu_get_libc_version());
}

} // namespace tavrine
