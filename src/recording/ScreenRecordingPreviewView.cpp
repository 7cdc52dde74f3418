#include "recording/ScreenRecordingPreviewView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/MenuStyle.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/Toggle.h"
#include "recording/RecordingPreview.h"
#include "recording/RecordingTexts.h"
#include "recording/ScreenRecordingPreviewModel.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

#include <cmath>

namespace tavrine {
namespace {

constexpr int margin = 16;
constexpr int rowHeight = 28;
constexpr int labelWidth = 82;
constexpr int frameWidth = 4; ///< of the screen round the movie, which has square corners

/// A row that begins with what it is about.
QHBoxLayout *rowOf(QWidget *row, const char *title) {
    row->setFixedHeight(rowHeight);
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(look::space::small);
    auto *label = new look::Label(QLatin1String(title), look::TextRole::body, look::Label::Tone::secondary);
    label->setFixedWidth(labelWidth);
    line->addWidget(label);
    return line;
}

} // namespace

/// The movie's pictures, and black until there is one. It covers all that is below: a new picture has nothing else
/// painted.
class ScreenRecordingPreviewView::Movie final : public QWidget {
public:
    Movie(ScreenRecordingPreviewModel &model, QWidget *parent) : QWidget(parent), m_model(model) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        connect(&model, &ScreenRecordingPreviewModel::pictureChanged, this, qOverload<>(&QWidget::update));
    }
    /// Of the screen where it is now.
    [[nodiscard]] QSize sizeInPixels() const { return (QSizeF(size()) * devicePixelRatioF()).toSize(); }

protected:
    void paintEvent(QPaintEvent *) override {
        m_model.setPictureSize(sizeInPixels()); // it may have come to another screen
        QPainter painter(this);
        if (m_model.picture().isNull())
            return painter.fillRect(rect(), Qt::black);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, m_model.picture().size() != sizeInPixels());
        painter.drawImage(rect(), m_model.picture());
    }

private:
    ScreenRecordingPreviewModel &m_model;
};

/// The movie as large as it fits on a black ground, and words where it cannot be shown.
class ScreenRecordingPreviewView::Screen final : public QWidget {
public:
    explicit Screen(ScreenRecordingPreviewModel &model) : m_model(model), m_movie(new Movie(model, this)) {
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setAccessibleName(inDesktopWords(QStringLiteral("Recording")));
    }
    void place() {
        m_movie->setVisible(!m_model.failure());
        const QSizeF room = QSizeF(size()) - QSizeF(2 * frameWidth, 2 * frameWidth);
        const QSizeF fitting = QSizeF(m_model.videoAspectRatio(), 1).scaled(room, Qt::KeepAspectRatio);
        const QSize whole(std::max(2, int(fitting.width())), std::max(2, int(fitting.height())));
        m_movie->setGeometry(QRect(QPoint((width() - whole.width()) / 2, (height() - whole.height()) / 2), whole));
        update();
    }

protected:
    void resizeEvent(QResizeEvent *event) override {
        QWidget::resizeEvent(event);
        place();
    }
    void showEvent(QShowEvent *event) override {
        QWidget::showEvent(event);
        if (!std::exchange(m_isPlaying, true))
            m_model.play(m_movie->sizeInPixels());
    }
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        look::fillRounded(painter, rect(), look::radius::row, Qt::black);
        look::strokeHairline(painter, rect(), look::radius::row, look::themeOf(this).outline);
        if (!m_model.failure())
            return;
        const QColor quiet(255, 255, 255, 170);
        look::paintSymbol(painter, QRectF(rect()).adjusted(0, 0, 0, -36), QStringLiteral("video"),
                          look::symbolsize::huge, quiet);
        look::paintLine(painter, QRectF(rect()).adjusted(margin, 60, -margin, 0),
                        inDesktopWords(QStringLiteral("This recording can't be shown here")), look::TextRole::callout,
                        quiet, Qt::AlignHCenter);
    }

private:
    ScreenRecordingPreviewModel &m_model;
    Movie *m_movie;
    bool m_isPlaying = false;
};

/// The folder; a long one is cut in the middle, where it says least.
class ScreenRecordingPreviewView::FolderLine final : public QWidget {
public:
    void setFolder(const QString &folder) {
        m_folder = QDir::toNativeSeparators(folder);
        setToolTip(m_folder);
        setAccessibleName(m_folder);
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        const QRectF symbol(0, 0, look::symbolsize::medium, height());
        look::paintSymbol(painter, symbol, QStringLiteral("folder.fill"), look::symbolsize::medium, theme.accentText);
        const double left = symbol.right() + look::space::tiny + 2;
        const double wide = width() - left;
        const QFontMetricsF metrics(look::fontFor(look::TextRole::callout));
        look::paintLine(painter, QRectF(left, 0, wide, height()), metrics.elidedText(m_folder, Qt::ElideMiddle, wide),
                        look::TextRole::callout, theme.text);
    }

private:
    QString m_folder;
};

/// The toolkit's line edit in the frame of this house.
class ScreenRecordingPreviewView::NameField final : public QWidget {
public:
    explicit NameField(const QString &name) : m_edit(new QLineEdit(name, this)) {
        m_edit->setFrame(false);
        m_edit->setFont(look::fontFor(look::TextRole::body));
        m_edit->setAccessibleName(inDesktopWords(QStringLiteral("File Name")));
        m_edit->setMaxLength(200); // with what is added to it a file system takes 255 bytes
        m_edit->installEventFilter(this);
        m_edit->setCursorPosition(0);
        setFocusProxy(m_edit);
        setFixedHeight(rowHeight + 2);
        if (look::Look *look = look::Look::current())
            connect(look, &look::Look::changed, this, [this] { recolour(); });
        recolour();
    }
    [[nodiscard]] QLineEdit &edit() { return *m_edit; }

protected:
    void resizeEvent(QResizeEvent *) override {
        const int tall = m_edit->sizeHint().height();
        m_edit->setGeometry(look::space::small - 2, (height() - tall) / 2, width() - 2 * look::space::small + 4, tall);
    }
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        look::fillRounded(painter, rect(), look::radius::control, theme.field);
        look::strokeHairline(painter, rect(), look::radius::control, theme.outline);
        if (m_edit->hasFocus())
            look::paintFocusRing(painter, QRectF(rect()).adjusted(3, 3, -3, -3), look::radius::control - 3, theme);
    }
    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
            update();
        if (event->type() == QEvent::ContextMenu) {
            QMenu *menu = m_edit->createStandardContextMenu();
            menu->setAttribute(Qt::WA_DeleteOnClose);
            look::dress(*menu, this);
            menu->popup(static_cast<QContextMenuEvent *>(event)->globalPos());
            return true;
        }
        return QWidget::eventFilter(object, event);
    }

private:
    void recolour() {
        const look::Theme &theme = look::themeOf(this);
        QPalette palette;
        palette.setColor(QPalette::Base, Qt::transparent);
        palette.setColor(QPalette::Text, theme.text);
        palette.setColor(QPalette::Highlight, theme.accent);
        palette.setColor(QPalette::HighlightedText, theme.onAccent);
        m_edit->setPalette(palette);
    }

    QLineEdit *m_edit;
};

ScreenRecordingPreviewView::ScreenRecordingPreviewView(std::shared_ptr<ScreenRecordingPreviewModel> model)
    : m_model(std::move(model)), m_screen(new Screen(*m_model)) {
    setAccessibleName(inDesktopWords(QStringLiteral("Recording Complete")));
    setFocusPolicy(Qt::StrongFocus); // no key that was meant for elsewhere presses anything
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin - 2, margin, margin);
    column->setSpacing(look::space::small);
    column->addWidget(makeHeader());
    if (!m_model->notice().isEmpty())
        column->addWidget(new look::Label(m_model->notice(), look::TextRole::callout, look::Label::Tone::danger));
    column->addWidget(m_screen, 1);
    column->addSpacing(look::space::tiny);
    column->addWidget(makeAudioRow());
    column->addWidget(makeFolderRow());
    column->addWidget(makeNameRow());
    column->addSpacing(look::space::tiny);
    column->addWidget(makeButtons());
    connect(m_model.get(), &ScreenRecordingPreviewModel::changed, this, &ScreenRecordingPreviewView::refresh);
    refresh();
}

QWidget *ScreenRecordingPreviewView::makeHeader() {
    auto *header = new QWidget;
    header->setFixedHeight(rowHeight);
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new look::Label(QStringLiteral("Recording Complete"), look::TextRole::heading), 1);
    m_facts = new look::Label({}, look::TextRole::callout, look::Label::Tone::secondary);
    m_facts->setAlignment(Qt::AlignRight);
    row->addWidget(m_facts, 1);
    return header;
}

QWidget *ScreenRecordingPreviewView::makeAudioRow() {
    auto *row = new QWidget;
    QHBoxLayout *line = rowOf(row, "Audio Track:");
    m_audio = new look::Label({}, look::TextRole::body);
    line->addWidget(m_audio, 1);
    m_mute = new look::Toggle;
    m_mute->setAccessibleName(inDesktopWords(QStringLiteral("Include Audio")));
    connect(m_mute, &QAbstractButton::clicked, m_model.get(), &ScreenRecordingPreviewModel::toggleMuted);
    line->addWidget(m_mute);
    return row;
}

QWidget *ScreenRecordingPreviewView::makeFolderRow() {
    auto *row = new QWidget;
    QHBoxLayout *line = rowOf(row, "Path:");
    m_folder = new FolderLine;
    line->addWidget(m_folder, 1);
    auto *change = new look::Button(QStringLiteral("Change..."));
    change->setButtonSize(look::ButtonSize::small);
    change->setAccessibleDescription(inDesktopWords(QStringLiteral("Path")));
    connect(change, &QAbstractButton::clicked, m_model.get(), &ScreenRecordingPreviewModel::pressChange);
    line->addWidget(change);
    return row;
}

QWidget *ScreenRecordingPreviewView::makeNameRow() {
    auto *row = new QWidget;
    QHBoxLayout *line = rowOf(row, "File Name");
    row->setFixedHeight(rowHeight + 2);
    auto *field = new NameField(m_model->fileName());
    connect(&field->edit(), &QLineEdit::textChanged, m_model.get(), &ScreenRecordingPreviewModel::setFileName);
    connect(&field->edit(), &QLineEdit::returnPressed, m_model.get(), &ScreenRecordingPreviewModel::pressSave);
    line->addWidget(field, 1);
    return row;
}

QWidget *ScreenRecordingPreviewView::makeButtons() {
    auto *row = new QWidget;
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(look::space::small);
    const auto add = [&](const char *text, look::ButtonStyle style, void (ScreenRecordingPreviewModel::*press)()) {
        auto *button = new look::Button(QLatin1String(text), style);
        connect(button, &QAbstractButton::clicked, m_model.get(), press);
        line->addWidget(button);
        return button;
    };
    add("Delete", look::ButtonStyle::destructive, &ScreenRecordingPreviewModel::pressDelete);
    line->addStretch();
    add("Copy Video", look::ButtonStyle::plain, &ScreenRecordingPreviewModel::pressCopy)
        ->setToolTip(QStringLiteral("Copy video file directly to macOS clipboard (Cmd+V to paste anywhere)"));
    add("Save Video", look::ButtonStyle::prominent, &ScreenRecordingPreviewModel::pressSave);
    return row;
}

void ScreenRecordingPreviewView::refresh() {
    QString facts = m_model->fileSizeText();
    if (const auto duration = m_model->duration())
        facts = clockText(*duration) + QString::fromUtf8(" · ") + facts;
    m_facts->setText(facts);
    m_audio->setText(m_model->audioText());
    m_mute->setEnabled(m_model->hasAudioTrack());
    m_mute->setChecked(m_model->hasAudioTrack() && !m_model->isMuted());
    m_folder->setFolder(m_model->targetFolder());
    m_screen->place();
}

} // namespace tavrine
