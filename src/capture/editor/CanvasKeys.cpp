#include "capture/editor/CanvasKeys.h"

#include "base/DesktopWords.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr double partOfSeen = 0.25; // what is put there is that wide and high

QString wordOf(const DrawingPath &path) {
    switch (path.kind) {
    case DrawingKind::path:
        return path.isHighlighter ? QStringLiteral("Highlighter") : QStringLiteral("Line");
    case DrawingKind::arrow:
        return QStringLiteral("Arrow");
    case DrawingKind::rectangle:
        return QStringLiteral("Rectangle");
    case DrawingKind::oval:
        return QStringLiteral("Circle");
    case DrawingKind::text:
        return QStringLiteral("Text");
    case DrawingKind::number:
        return QStringLiteral("Number stamp");
    }
    return {};
}

/// How far a value may go without leaving 0…1; one that is beyond already may come back.
double kept(double least, double most, double by) {
    return std::clamp(by, std::min(0.0, -least), std::max(0.0, 1 - most));
}

} // namespace

std::vector<DrawingPath> CanvasKeys::drawings() const {
    return m_model.parent() ? m_model.parent()->drawings.get() : std::vector<DrawingPath>();
}

std::optional<size_t> CanvasKeys::place(const std::vector<DrawingPath> &drawings) const {
    const auto found =
        std::ranges::find_if(drawings, [this](const DrawingPath &path) { return path.id == m_selected; });
    return found == drawings.end() ? std::nullopt : std::optional(size_t(found - drawings.begin()));
}

std::optional<DrawingPath> CanvasKeys::selected() const {
    if (!m_selected)
        return std::nullopt; // each painting asks, and the drawings are a copy
    const std::vector<DrawingPath> all = drawings();
    const auto at = place(all);
    return at && m_model.activeTextID() != m_selected ? std::optional(all[*at]) : std::nullopt;
}

bool CanvasKeys::enter(const QRectF &seen) {
    if (letGo())
        return true;
    if (!m_model.parent() || m_model.parent()->tool.get() == DrawingTool::eraser)
        return false;
    const size_t before = drawings().size();
    const DrawingTool tool = m_model.parent()->tool.get();
    const bool isLine = kindOf(tool) == DrawingKind::path;
    const QPointF reach(seen.width() * partOfSeen / 2, isLine ? 0 : seen.height() * partOfSeen / 2);
    const bool isPoint = kindOf(tool) == DrawingKind::text || kindOf(tool) == DrawingKind::number;
    m_model.mouseDown(isPoint ? seen.center() : seen.center() - reach);
    m_model.mouseDragged(seen.center() + reach);
    m_model.mouseUp();
    const std::vector<DrawingPath> all = drawings();
    if (all.size() <= before)
        return false;
    m_selected = all.back().id;
    return true;
}

bool CanvasKeys::selectNext(bool isForward) {
    const std::vector<DrawingPath> all = drawings();
    const auto at = place(all);
    // One before the first and one behind the last are outside, and the way in is from there.
    const size_t next = at ? (isForward ? *at + 1 : *at - 1) : (isForward ? 0 : all.size() - 1);
    m_selected = next < all.size() ? std::optional(all[next].id) : std::nullopt;
    return m_selected.has_value();
}

QPointF CanvasKeys::kept(const std::vector<QPointF> &points, QPointF by) const {
    const auto [left, right] = std::ranges::minmax(points, {}, [](const QPointF &point) { return point.x(); });
    const auto [top, bottom] = std::ranges::minmax(points, {}, [](const QPointF &point) { return point.y(); });
    return {tavrine::kept(left.x(), right.x(), by.x()), tavrine::kept(top.y(), bottom.y(), by.y())};
}

bool CanvasKeys::step(Step step, QPointF by) {
    std::vector<DrawingPath> all = drawings();
    const auto at = place(all);
    const QSizeF bounds = m_model.bounds();
    if (!at || all[*at].points.empty() || bounds.isEmpty())
        return false;
    std::vector<QPointF> &points = all[*at].points;
    const QPointF part(by.x() / bounds.width(), by.y() / bounds.height());
    if (step == Step::resize && points.size() > 1) {
        points.back() += kept({points.back()}, part);
    } else {
        const QPointF whole = kept(points, part);
        for (QPointF &point : points)
            point += whole;
    }
    m_model.writeDrawings(std::move(all));
    return true;
}

bool CanvasKeys::remove() {
    std::vector<DrawingPath> all = drawings();
    const auto at = place(all);
    m_selected.reset();
    if (!at)
        return false;
    all.erase(all.begin() + qptrdiff(*at));
    m_model.writeDrawings(std::move(all));
    return true;
}

bool CanvasKeys::letGo() {
    const bool had = place(drawings()).has_value();
    m_selected.reset();
    return had;
}

QString CanvasKeys::words() const {
    const std::vector<DrawingPath> all = drawings();
    const auto at = place(all);
    if (!at)
        return {};
    return inDesktopWords(QStringLiteral("%1, %2 of %3").arg(wordOf(all[*at])).arg(*at + 1).arg(all.size()));
}

} // namespace tavrine
