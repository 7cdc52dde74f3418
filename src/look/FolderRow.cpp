#include "look/FolderRow.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine::look {
namespace {

constexpr int rowHeight = 92;
constexpr int folderPlateSide = 28;
constexpr int plateTop = 15;

} // namespace

FolderRow::FolderRow(const QString &title, QWidget *parent)
    : QWidget(parent), m_title(inDesktopWords(title)), m_reset(new Button(QStringLiteral("Reset to Default Folder"))) {
    setFixedHeight(rowHeight);
    setRole(*this, QAccessible::Grouping);
    setAccessibleName(m_title);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2 * space::medium + folderPlateSide, 0, space::medium, space::medium);
    column->addStretch();
    auto *row = new QHBoxLayout;
    row->setSpacing(space::small);
    auto *change = new Button(QStringLiteral("Change..."));
    change->setAccessibleDescription(m_title);
    change->setButtonSize(ButtonSize::small);
    m_reset->setButtonSize(ButtonSize::small);
    row->addWidget(change);
    row->addWidget(m_reset);
    row->addStretch();
    column->addLayout(row);
    connect(change, &QAbstractButton::clicked, this, &FolderRow::changePressed);
    connect(m_reset, &QAbstractButton::clicked, this, &FolderRow::resetPressed);
}

void FolderRow::setFolder(const QString &folder, bool canReset) {
    m_folder = folder;
    m_reset->setEnabled(canReset);
    setToolTip(folder);
    setAccessibleDescription(folder);
    update();
}

void FolderRow::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const QRectF plate(space::medium, plateTop, folderPlateSide, folderPlateSide);
    paintSymbolPlate(painter, plate, QStringLiteral("folder.fill"), theme.control, theme.text);
    const qreal left = plate.right() + space::medium;
    const qreal wide = width() - left - space::medium;
    paintLine(painter, QRectF(left, 10, wide, 18), m_title, TextRole::body, theme.text);
    const QFontMetricsF metrics(fontFor(TextRole::caption));
    paintLine(painter, QRectF(left, 30, wide, 16), metrics.elidedText(m_folder, Qt::ElideMiddle, wide),
              TextRole::caption, theme.secondaryText);
}

} // namespace tavrine::look
