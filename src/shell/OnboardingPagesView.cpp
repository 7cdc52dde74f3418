#include "shell/OnboardingPagesView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/ScrollArea.h"
#include "look/Symbols.h"

#include <QGridLayout>
#include <QPainter>
#include <QRadialGradient>
#include <QVBoxLayout>

#include <algorithm>

namespace tavrine::onboardingPages {
namespace {

using namespace look;

constexpr int sideMargin = 36;
constexpr int topMargin = 30; // the window's name stands there

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

QColor faint(QColor colour, int alpha) {
    colour.setAlpha(alpha);
    return colour;
}

/// The first thing that a person sees: a symbol on a plate that glows in the accent.
class Emblem final : public QWidget {
public:
    static constexpr int largest = 220;
    static constexpr int smallest = 72;

    explicit Emblem(const QString &symbol) : m_symbol(symbol) { setFixedSize(largest, largest); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const QPointF middle = QRectF(rect()).center();
        QRadialGradient glow(middle, width() / 2.0);
        glow.setColorAt(0, faint(accent, 110));
        glow.setColorAt(0.55, faint(accent, 30));
        glow.setColorAt(1, faint(accent, 0));
        painter.fillRect(rect(), glow);
        const qreal scale = qreal(width()) / largest;
        const qreal half = 50 * scale;
        const QRectF body(middle.x() - half, middle.y() - half, 2 * half, 2 * half);
        QLinearGradient fill(body.topLeft(), body.bottomRight());
        fill.setColorAt(0, QColor(0xFF, 0xB3, 0x40));
        fill.setColorAt(1, QColor(0xF0, 0x74, 0x00));
        painter.setBrush(fill);
        painter.drawRoundedRect(body, 26 * scale, 26 * scale);
        strokeHairline(painter, body, 26 * scale, QColor(255, 255, 255, 70));
        paintSymbol(painter, body, m_symbol, 56 * scale, Qt::white);
    }

private:
    QString m_symbol;
};

/// The emblem over its words, and smaller where these would not be seen below it.
class Greeting final : public QWidget {
public:
    explicit Greeting(Emblem *emblem) : m_emblem(emblem) {}

protected:
    void resizeEvent(QResizeEvent *event) override {
        QWidget::resizeEvent(event);
        const int words = sizeHint().height() - m_emblem->height();
        const int side = std::clamp(parentWidget()->height() - words, Emblem::smallest, Emblem::largest);
        m_emblem->setFixedSize(side, side);
    }

private:
    Emblem *m_emblem;
};

/// A symbol and the name of a feature.
class FeatureGridCell final : public QWidget {
public:
    FeatureGridCell(const QString &name, const QString &icon) : m_name(inDesktopWords(name)), m_icon(icon) {
        setAccessibleName(m_name);
        setFixedHeight(44);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        fillRounded(painter, rect(), radius::row, QColor(255, 255, 255, 13));
        strokeHairline(painter, rect(), radius::row, QColor(255, 255, 255, 20));
        const QRectF disc(6, (height() - 32) / 2.0, 32, 32);
        paintSymbolPlate(painter, disc, m_icon, faint(accent, 40), accent);
        paintLine(painter, QRectF(disc.right() + 10, 0, width() - disc.right() - 18, height()), m_name,
                  TextRole::bodyStrong, theme.text);
    }

private:
    QString m_name;
    QString m_icon;
};

/// "checkmark" and "Granted".
class GrantedMark final : public QWidget {
public:
    explicit GrantedMark(QWidget *parent) : QWidget(parent) {
        setAccessibleName(inDesktopWords(text(OnboardingModel::grantedText)));
        setFixedSize(int(lineWidth(inDesktopWords(text(OnboardingModel::grantedText)), TextRole::bodyStrong)) + 26, 28);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        paintSymbol(painter, QRectF(0, 0, 16, height()), text(OnboardingModel::grantedSymbol), 16, theme.successText);
        paintLine(painter, QRectF(22, 0, width() - 22, height()), inDesktopWords(text(OnboardingModel::grantedText)),
                  TextRole::bodyStrong, theme.successText);
    }
};

/// What is asked for and why, with "Allow" or "Granted" at the end.
class PermissionRow final : public QWidget {
public:
    PermissionRow(const OnboardingModel::PermissionRow &row, PermissionChecker &checker)
        : m_row(row), m_checker(checker),
          m_allow(new Button(text(OnboardingModel::allowButton), ButtonStyle::prominent, this)),
          m_granted(new GrantedMark(this)) {
        setFixedHeight(76);
        m_allow->setAccessibleName(inDesktopWords(text(OnboardingModel::allowButton)) + QLatin1Char(' ') +
                                   inDesktopWords(text(row.name)));
        m_allow->setAccessibleDescription(inDesktopWords(text(row.description)));
        connect(m_allow, &QAbstractButton::clicked, this, [this] { (m_checker.*m_row.onGrant)(); });
        connect(&checker, &PermissionChecker::accessibilityGrantedChanged, this, &PermissionRow::refresh);
        connect(&checker, &PermissionChecker::screenRecordingGrantedChanged, this, &PermissionRow::refresh);
        refresh();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        fillRounded(painter, rect(), radius::card, QColor(255, 255, 255, 13));
        strokeHairline(painter, rect(), radius::card, QColor(255, 255, 255, 20));
        const QRectF symbol(16, (height() - 40) / 2.0, 40, 40);
        paintSymbolPlate(painter, symbol, text(m_row.icon), faint(accent, 40), accent);
        const qreal left = symbol.right() + 14;
        const qreal wide = width() - left - 104;
        const QString why = inDesktopWords(text(m_row.description));
        const bool wraps = lineWidth(why, TextRole::callout) > wide;
        const qreal middle = height() / 2.0 - (wraps ? 9 : 0);
        paintLine(painter, QRectF(left, middle - 22, wide, 22), inDesktopWords(text(m_row.name)), TextRole::heading,
                  theme.text);
        if (!wraps) {
            paintLine(painter, QRectF(left, middle + 1, wide, 18), why, TextRole::callout, theme.secondaryText);
            return;
        }
        painter.setFont(fontFor(TextRole::callout));
        painter.setPen(theme.secondaryText);
        painter.drawText(QRectF(left, middle + 1, wide, 40), int(Qt::AlignLeft) | int(Qt::TextWordWrap), why);
    }
    void resizeEvent(QResizeEvent *event) override {
        QWidget::resizeEvent(event);
        for (QWidget *widget : {static_cast<QWidget *>(m_allow), static_cast<QWidget *>(m_granted)}) {
            const QSize size = widget == m_allow ? m_allow->sizeHint().expandedTo({76, 0}) : m_granted->size();
            widget->setGeometry(QRect(QPoint(width() - 16 - size.width(), (height() - size.height()) / 2), size));
        }
    }

private:
    void refresh() {
        const bool isGranted = (m_checker.*m_row.isGranted)();
        m_allow->setVisible(!isGranted);
        m_granted->setVisible(isGranted);
    }

    OnboardingModel::PermissionRow m_row;
    PermissionChecker &m_checker;
    Button *m_allow;
    GrantedMark *m_granted;
};

/// Key caps with what each opens, in one line.
class ShortcutLine final : public QWidget {
public:
    explicit ShortcutLine(const std::vector<OnboardingModel::Shortcut> &shortcuts) {
        QStringList words;
        for (const auto &[keys, name] : shortcuts) {
            m_hints.push_back({.key = keys, .symbol = {}, .label = inDesktopWords(name)});
            words.append(inDesktopWords(name) + QLatin1Char(' ') + inDesktopWords(keys));
        }
        setAccessibleName(words.join(QStringLiteral(", ")));
        setFixedHeight(24);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        qreal wide = -gap;
        for (const KeyHint &hint : m_hints)
            wide += keyHintWidth(hint) + gap;
        qreal left = (width() - wide) / 2;
        for (const KeyHint &hint : m_hints)
            left += paintKeyHint(painter, QRectF(left, 0, width() - left, height()), hint, themeOf(this)) + gap;
    }

private:
    static constexpr qreal gap = 22;
    std::vector<KeyHint> m_hints;
};

/// What this desktop does not allow, as it is when the page comes.
class WantingLine final : public Label {
public:
    explicit WantingLine(std::function<QString()> wanting)
        : Label({}, TextRole::caption, Tone::secondary), m_wanting(std::move(wanting)) {
        setAlignment(Qt::AlignHCenter);
    }

protected:
    void showEvent(QShowEvent *event) override {
        Label::showEvent(event);
        setText(m_wanting());
    }

private:
    std::function<QString()> m_wanting;
};

Label *centred(const char *words, TextRole role, Label::Tone tone) {
    auto *label = new Label(text(words), role, tone);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

QVBoxLayout *makeColumn(QWidget *content) {
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins(sideMargin, 0, sideMargin, 0);
    column->setSpacing(0);
    return column;
}

/// The content over the button that leads on, which stands at the same place on every page, so that a hand may rest on
/// it, and in sight: what has no room above it scrolls.
Page makePage(QWidget *parent, QWidget *content, OnboardingModel::Page page) {
    auto *whole = new QWidget(parent);
    auto *column = new QVBoxLayout(whole);
    column->setContentsMargins(0, topMargin, 0, space::tiny);
    column->setSpacing(0);
    column->addWidget(new ScrollPane(content), 1);
    column->addSpacing(space::small);
    auto *forward = new Button(text(OnboardingModel::pages.at(size_t(page)).button), ButtonStyle::prominent);
    forward->setButtonSize(ButtonSize::large);
    forward->setMinimumWidth(200);
    column->addWidget(forward, 0, Qt::AlignHCenter);
    return {whole, forward};
}

} // namespace

look::Theme theme() {
    Theme theme = darkTheme(accent);
    theme.surface = ground;
    theme.accent = accent;
    theme.onAccent = QColor(0x1A, 0x10, 0x00);
    return theme;
}

Page makeWelcomeScreen(QWidget *parent) {
    const auto &texts = OnboardingModel::pages[size_t(OnboardingModel::Page::welcome)];
    auto *emblem = new Emblem(text(OnboardingModel::welcomeSymbol));
    auto *content = new Greeting(emblem);
    QVBoxLayout *column = makeColumn(content);
    column->addStretch(3);
    column->addWidget(emblem, 0, Qt::AlignHCenter);
    column->addSpacing(space::medium);
    column->addWidget(centred(texts.title, TextRole::hero, Label::Tone::primary));
    column->addSpacing(space::small);
    column->addWidget(centred(texts.subtitle, TextRole::heading, Label::Tone::secondary));
    column->addStretch(4);
    return makePage(parent, content, OnboardingModel::Page::welcome);
}

Page makeFeaturesScreen(QWidget *parent, std::function<void()> explore) {
    const auto &texts = OnboardingModel::pages[size_t(OnboardingModel::Page::features)];
    auto *content = new QWidget;
    QVBoxLayout *column = makeColumn(content);
    column->addWidget(centred(texts.title, TextRole::title, Label::Tone::primary));
    column->addSpacing(space::large);
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(space::medium);
    grid->setVerticalSpacing(7);
    int index = 0;
    for (const auto &feature : OnboardingModel::features) {
        grid->addWidget(new FeatureGridCell(text(feature.name), text(feature.symbol)), index / 2, index % 2);
        ++index;
    }
    auto *link = new Button(text(OnboardingModel::featuresLink), ButtonStyle::link);
    link->setSymbol(QStringLiteral("arrow.up.right"));
    QObject::connect(link, &QAbstractButton::clicked, content, std::move(explore));
    grid->addWidget(link, index / 2, index % 2, Qt::AlignCenter);
    column->addLayout(grid);
    column->addStretch();
    return makePage(parent, content, OnboardingModel::Page::features);
}

Page makePermissionsScreen(QWidget *parent, PermissionChecker &checker,
                           const std::vector<OnboardingModel::Shortcut> &shortcuts, std::function<QString()> wanting) {
    const auto &texts = OnboardingModel::pages[size_t(OnboardingModel::Page::permissions)];
    auto *content = new QWidget;
    QVBoxLayout *column = makeColumn(content);
    column->addStretch(2);
    column->addWidget(centred(texts.title, TextRole::title, Label::Tone::primary));
    column->addSpacing(space::small);
    column->addWidget(centred(texts.subtitle, TextRole::body, Label::Tone::secondary));
    column->addSpacing(space::huge);
    for (const auto &row : OnboardingModel::permissionRows) {
        column->addWidget(new PermissionRow(row, checker));
        column->addSpacing(space::medium);
    }
    column->addWidget(new WantingLine(std::move(wanting)));
    column->addStretch(2);
    column->addWidget(new ShortcutLine(shortcuts));
    column->addStretch(1);
    return makePage(parent, content, OnboardingModel::Page::permissions);
}

} // namespace tavrine::onboardingPages
