#include "capture/SnipSaveDialogView.h"

#include "base/DesktopWords.h"
#include "capture/SnipSaveDialogModel.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/Tile.h"
#include "look/Toggle.h"

#include <QDir>
#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr QSize dialogSize{340, 264};
constexpr int margin = 16;
constexpr int folderHeight = 40;

/// The folder's path behind its symbol; a long one is cut in the middle, where it says least.
class FolderLine final : public QWidget {
public:
    explicit FolderLine(const QString &path) : m_path(path) {
        setFixedHeight(folderHeight);
        setAccessibleName(path);
        setToolTip(path);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        look::fillRounded(painter, rect(), look::radius::control, theme.control);
        const QRectF symbol(look::space::small + 2, 0, look::symbolsize::medium, height());
        look::paintSymbol(painter, symbol, QStringLiteral("folder.fill"), look::symbolsize::medium, theme.accentText);
        const QRectF words(symbol.right() + look::space::small, 0, width() - symbol.right() - 2.0 * look::space::small,
                           height());
        const QFontMetricsF metrics(look::fontFor(look::TextRole::callout));
        look::paintLine(painter, words, metrics.elidedText(m_path, Qt::ElideMiddle, words.width()),
                        look::TextRole::callout, theme.text);
    }

private:
    QString m_path;
};

/// Two lines and a switch, without a plate.
QWidget *useAsDefaultRow(SnipSaveDialogModel &model) {
    auto *row = new QWidget;
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    auto *words = new QVBoxLayout;
    words->setSpacing(1);
    words->addWidget(new look::Label(QStringLiteral("Use as default"), look::TextRole::body));
    words->addWidget(new look::Label(QStringLiteral("Skip this dialog next time"), look::TextRole::caption,
                                     look::Label::Tone::secondary));
    line->addLayout(words, 1);
    auto *toggle = new look::Toggle;
    toggle->setAccessibleName(inDesktopWords(QStringLiteral("Use as default")));
    toggle->setAccessibleDescription(inDesktopWords(QStringLiteral("Skip this dialog next time")));
    toggle->setChecked(model.useAsDefault());
    QObject::connect(toggle, &QAbstractButton::toggled, row, [&model](bool isOn) { model.setUseAsDefault(isOn); });
    line->addWidget(toggle, 0, Qt::AlignVCenter);
    return row;
}

} // namespace

SnipSaveDialogView::SnipSaveDialogView(std::shared_ptr<SnipSaveDialogModel> model) : m_model(std::move(model)) {
    setFixedSize(dialogSize);
    setAccessibleName(inDesktopWords(QStringLiteral("Save Screenshot")));
    setAccessibleDescription(inDesktopWords(QStringLiteral("Choose where to save this capture")));
    setFocusPolicy(Qt::StrongFocus); // the keys come here until Tab takes them to a control
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin - 2);
    column->setSpacing(0);
    column->addWidget(new look::Label(QStringLiteral("Save Screenshot"), look::TextRole::heading));
    column->addSpacing(2);
    column->addWidget(new look::Label(QStringLiteral("Choose where to save this capture"), look::TextRole::callout,
                                      look::Label::Tone::secondary));
    column->addSpacing(look::space::large);
    column->addWidget(new FolderLine(QDir::toNativeSeparators(m_model->defaultDirectory())));
    column->addSpacing(look::space::large);
    column->addWidget(useAsDefaultRow(*m_model));
    column->addStretch();

    auto *row = new QHBoxLayout;
    row->setSpacing(look::space::small);
    const auto add = [&](const char *text, look::ButtonStyle style, void (SnipSaveDialogModel::*press)()) {
        auto *button = new look::Button(QLatin1String(text), style);
        connect(button, &QAbstractButton::clicked, this, [this, press] { (m_model.get()->*press)(); });
        row->addWidget(button);
    };
    add("Change Folder", look::ButtonStyle::plain, &SnipSaveDialogModel::chooseFolder);
    row->addStretch();
    add("Cancel", look::ButtonStyle::plain, &SnipSaveDialogModel::cancel);
    add("Save Here", look::ButtonStyle::prominent, &SnipSaveDialogModel::saveHere);
    column->addLayout(row);
    column->addSpacing(look::space::medium - 2);

    auto *note = new QHBoxLayout;
    note->setSpacing(0);
    note->addStretch();
    const QString lead = QStringLiteral("You can change this anytime in ");
    auto *words = new look::Label(lead, look::TextRole::caption, look::Label::Tone::secondary);
    words->setMinimumWidth(words->sizeHint().width());
    note->addWidget(words);
    note->addWidget(new look::Label(QStringLiteral("Settings → Screenshot"), look::TextRole::captionStrong,
                                    look::Label::Tone::secondary));
    note->addStretch();
    column->addLayout(note);
}

void SnipSaveDialogView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        m_model->saveHere();
    else if (event->key() == Qt::Key_Escape)
        m_model->cancel();
    else
        PanelSurface::keyPressEvent(event);
}

} // namespace tavrine
