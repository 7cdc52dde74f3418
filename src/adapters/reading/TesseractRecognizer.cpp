#include "adapters/reading/TesseractRecognizer.h"

#include "adapters/reading/PagePreparation.h"
#include "adapters/reading/RecognitionLanguages.h"
#include "adapters/reading/TextRepair.h"

#include <QLocale>

#include <string>
#include <vector>

#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

namespace tavrine {
namespace {

constexpr int resolution = 192; // of the enlarged page: the engine only wants to know that it is not a stamp

QString taken(char *text) {
    const std::unique_ptr<char[]> owner(text);
    return QString::fromUtf8(text);
}

} // namespace

class TesseractRecognizer::Engine {
public:
    /// False when not one language is there.
    [[nodiscard]] bool start() {
        if (!init(QStringLiteral("eng")) && !initAny())
            return false;
        std::vector<std::string> names;
        m_api.GetAvailableLanguagesAsVector(&names);
        QStringList installed;
        for (const std::string &name : names)
            installed.append(QString::fromStdString(name));
        const QString wanted =
            reading::recognitionLanguages(QLocale::system().uiLanguages(), installed).join(QLatin1Char('+'));
        return wanted.isEmpty() || wanted == QLatin1String("eng") || init(wanted) || init(QStringLiteral("eng"));
    }

    [[nodiscard]] std::optional<QStringList> linesOf(const QImage &page) {
        m_api.SetImage(page.constBits(), page.width(), page.height(), 1, static_cast<int>(page.bytesPerLine()));
        m_api.SetSourceResolution(resolution);
        if (m_api.Recognize(nullptr) != 0)
            return std::nullopt;
        QStringList lines;
        const std::unique_ptr<tesseract::ResultIterator> result(m_api.GetIterator());
        if (!result || result->Empty(tesseract::RIL_TEXTLINE))
            return lines;
        do {
            const QString line = lineAt(*result, page);
            if (!line.isEmpty())
                lines.append(line);
        } while (result->Next(tesseract::RIL_TEXTLINE));
        m_api.Clear();
        return reading::withPlausibleQuotes(std::move(lines));
    }

private:
    bool init(const QString &languages) {
        return m_api.Init(nullptr, languages.toUtf8().constData(), tesseract::OEM_LSTM_ONLY) == 0 &&
               m_api.SetVariable("debug_file", "/dev/null");
    }
    /// Without English: the desktop's languages one by one.
    bool initAny() {
        const QStringList desktop = QLocale::system().uiLanguages();
        for (const QString &language : desktop) {
            const QString data = reading::recognizerName(language);
            if (!data.isEmpty() && init(data))
                return true;
        }
        return false;
    }

    static QString lineAt(const tesseract::ResultIterator &start, const QImage &page) {
        tesseract::ResultIterator at(start);
        std::vector<reading::ReadWord> words;
        do {
            if (!at.Empty(tesseract::RIL_WORD)) {
                int left = 0;
                int top = 0;
                int right = 0;
                int bottom = 0;
                at.BoundingBox(tesseract::RIL_WORD, &left, &top, &right, &bottom);
                int baseline = bottom;
                int ends[3] = {};
                at.Baseline(tesseract::RIL_WORD, &ends[0], &baseline, &ends[1], &ends[2]);
                words.push_back({taken(at.GetUTF8Text(tesseract::RIL_WORD)),
                                 QRect(QPoint(left, top), QPoint(right - 1, bottom - 1)), baseline});
            }
        } while (!at.IsAtFinalElement(tesseract::RIL_TEXTLINE, tesseract::RIL_WORD) && at.Next(tesseract::RIL_WORD));
        return reading::repairedLine(words, page);
    }

    tesseract::TessBaseAPI m_api;
};

TesseractRecognizer::TesseractRecognizer() = default;
TesseractRecognizer::~TesseractRecognizer() = default;

void TesseractRecognizer::prepare() {
    auto engine = std::make_unique<Engine>();
    if (!engine->start())
        return;
    m_engine = std::move(engine);
    // What is made or opened with the first page, the place for the library's messages among it: an empty page makes it
    // say so.
    QImage page(64, 64, QImage::Format_Grayscale8);
    page.fill(Qt::white);
    static_cast<void>(m_engine->linesOf(page));
}

Recognizer::Result TesseractRecognizer::recognize(const QImage &image, std::stop_token) {
    if (!m_engine)
        prepare();
    if (!m_engine)
        return Failure{QStringLiteral("no language of the text recognition is installed")};
    const QImage page = reading::preparedPage(image);
    if (page.isNull())
        return Failure{QStringLiteral("the picture has no pixels, or memory is wanting")};
    auto lines = m_engine->linesOf(page);
    if (!lines)
        return Failure{QStringLiteral("the text recognition gave up")};
    return *lines;
}

} // namespace tavrine
