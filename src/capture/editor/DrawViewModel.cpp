#include "capture/editor/DrawViewModel.h"

#include "base/Uuid.h"
#include "capture/editor/AnnotationRenderer.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/EraserRule.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr float highlighterAlpha = 0.4F;
constexpr double highlighterWidths = 4; // a highlighter is that many times as wide as a pen
constexpr double eraserWidth = 30;

// Letters are no part of a gesture's area: an edge's softness and the caps of two segments are.
constexpr double softness = 3;

bool isFreehand(DrawingTool tool) {
    return tool == DrawingTool::pen || tool == DrawingTool::highlighter;
}

bool isDraggedOut(DrawingTool tool) {
    return tool == DrawingTool::arrow || tool == DrawingTool::rectangle || tool == DrawingTool::oval;
}

// Writing a bound value may give the model a new parent, which must not end the closure that is running.
template <class Value>
void write(const Binding<Value> &binding, Value value) {
    const std::function<void(Value)> set = binding.set;
    set(std::move(value));
}

// An annotation of the tool in the canvas' colour and width, without points.
DrawingPath blank(const DrawingCanvas &canvas, DrawingTool tool) {
    DrawingPath path;
    path.id = freshUuidString();
    path.kind = kindOf(tool);
    path.color = canvas.selectedColor;
    path.lineWidth = canvas.lineWidth;
    if (tool == DrawingTool::highlighter) {
        path.color.setAlphaF(highlighterAlpha);
        path.lineWidth *= highlighterWidths;
        path.isHighlighter = true;
    }
    return path;
}

} // namespace

bool DrawViewModel::canDraw(const QPointF &point) const {
    return m_parent && m_bounds.width() > 0 && m_bounds.height() > 0 && std::isfinite(m_bounds.width()) &&
           std::isfinite(m_bounds.height()) && std::isfinite(point.x()) && std::isfinite(point.y());
}

QPointF DrawViewModel::normalised(const QPointF &point) const {
    return {point.x() / m_bounds.width(), point.y() / m_bounds.height()};
}

void DrawViewModel::setBounds(const QSizeF &bounds) {
    const QSizeF before = std::exchange(m_bounds, bounds);
    if (before.isEmpty() || bounds.isEmpty() || before == bounds)
        return;
    const double across = bounds.width() / before.width();
    const double down = bounds.height() / before.height();
    for (QPointF &point : m_currentPoints)
        point = {point.x() * across, point.y() * down};
    if (!m_activeTextField)
        return;
    QPointF &origin = m_activeTextField->origin;
    origin = {origin.x() * across, origin.y() * down};
    if (m_view.moveTextField)
        m_view.moveTextField(origin);
}

void DrawViewModel::mouseDown(const QPointF &point) {
    m_hasEndedTyping = false;
    if (!m_parent)
        return;
    if (m_activeTextField) { // the click ends the typing, wherever it is, and does nothing else
        m_hasEndedTyping = true;
        commitActiveText();
        write(m_parent->tool, DrawingTool::pen);
        return;
    }
    if (!canDraw(point))
        return;
    switch (m_parent->tool.get()) {
    case DrawingTool::numberStamp:
        placeStamp(point);
        break;
    case DrawingTool::text:
        beginText(point);
        break;
    case DrawingTool::eraser:
        eraseAt(point);
        break;
    default:
        const QRectF before = gestureArea();
        m_currentPoints = {point};
        redrawGesture(before);
        break;
    }
}

void DrawViewModel::mouseDragged(const QPointF &point) {
    if (m_hasEndedTyping || !canDraw(point))
        return;
    const DrawingTool tool = m_parent->tool.get();
    if (tool == DrawingTool::eraser) {
        eraseAt(point);
    } else if (isFreehand(tool)) {
        m_currentPoints.push_back(point);
        if (const std::optional<DrawingPath> path = gesture()) {
            // Only the newest segment, with the end of the one before it, looks different.
            const size_t count = path->points.size();
            const double reach = path->lineWidth / 2 + softness;
            const QPointF last = count > 1 ? path->points[count - 2] : point;
            redrawGesture(QRectF(last, point).normalized().adjusted(-reach, -reach, reach, reach));
        }
    } else if (isDraggedOut(tool) && !m_currentPoints.empty()) {
        const QRectF before = gestureArea();
        m_currentPoints = {m_currentPoints.front(), point};
        redrawGesture(before | gestureArea());
    }
}

void DrawViewModel::mouseUp() {
    m_hasEndedTyping = false;
    if (m_currentPoints.empty())
        return;
    const QRectF area = gestureArea();
    if (m_parent) {
        const DrawingTool tool = m_parent->tool.get();
        if (isFreehand(tool) || (isDraggedOut(tool) && m_currentPoints.size() >= 2))
            commitCurrentPath(DrawingCanvas(*m_parent));
    }
    m_currentPoints.clear();
    redrawGesture(area);
}

void DrawViewModel::commitCurrentPath(const DrawingCanvas &canvas) {
    if (m_bounds.width() <= 0 || m_bounds.height() <= 0)
        return;
    DrawingPath path = blank(canvas, canvas.tool.get());
    path.points.reserve(m_currentPoints.size());
    for (const QPointF &point : m_currentPoints)
        path.points.push_back(normalised(point));
    std::vector<DrawingPath> drawings = canvas.drawings.get();
    drawings.push_back(std::move(path));
    write(canvas.drawings, std::move(drawings));
    if (m_view.drawingsChanged)
        m_view.drawingsChanged();
}

void DrawViewModel::writeDrawings(std::vector<DrawingPath> drawings) {
    write(m_parent->drawings, std::move(drawings));
    if (m_view.drawingsChanged)
        m_view.drawingsChanged();
}

void DrawViewModel::append(DrawingPath path) {
    std::vector<DrawingPath> drawings = m_parent->drawings.get();
    drawings.push_back(std::move(path));
    writeDrawings(std::move(drawings));
}

void DrawViewModel::eraseAt(const QPointF &point) {
    if (!canDraw(point))
        return;
    std::vector<DrawingPath> drawings = m_parent->drawings.get();
    std::vector<DrawingPath> left = erased(drawings, normalised(point));
    if (left.size() == drawings.size())
        return;
    writeDrawings(std::move(left));
}

void DrawViewModel::beginText(const QPointF &point) {
    commitActiveText();
    if (!canDraw(point))
        return;
    DrawingPath path = blank(*m_parent, DrawingTool::text);
    path.points = {normalised(point)};
    m_activeTextID = path.id;
    m_activeTextField = TextField{point, path.color, path.lineWidth, {}};
    append(std::move(path));
    if (m_view.showTextField && m_activeTextField)
        m_view.showTextField(*m_activeTextField);
}

void DrawViewModel::placeStamp(const QPointF &point) {
    commitActiveText();
    if (!canDraw(point))
        return;
    const int number = m_parent->nextStampNumber.get();
    DrawingPath path = blank(*m_parent, DrawingTool::numberStamp);
    path.points = {normalised(point)};
    path.number = number;
    append(std::move(path));
    if (m_parent)
        write(m_parent->nextStampNumber, number + 1);
}

void DrawViewModel::updateActiveText(const QString &string) {
    if (!m_parent || !m_activeTextID)
        return;
    std::vector<DrawingPath> drawings = m_parent->drawings.get();
    const auto typed = std::find_if(drawings.begin(), drawings.end(),
                                    [this](const DrawingPath &path) { return path.id == *m_activeTextID; });
    if (typed == drawings.end() || typed->text == string)
        return;
    typed->text = string;
    writeDrawings(std::move(drawings));
}

void DrawViewModel::controlTextDidChange(const QString &string) {
    if (!m_activeTextField)
        return;
    m_activeTextField->string = string;
    updateActiveText(string);
}

void DrawViewModel::controlTextDidEndEditing() {
    commitActiveText();
}

void DrawViewModel::commitActiveText() {
    if (!m_activeTextField)
        return;
    const QString string = m_activeTextField->string;
    updateActiveText(string);
    // Cleared before the field goes: a field that loses the keyboard as it goes tells of it.
    m_activeTextField.reset();
    const std::optional<QString> id = std::exchange(m_activeTextID, std::nullopt);
    if (m_parent && string.trimmed().isEmpty()) {
        std::vector<DrawingPath> drawings = m_parent->drawings.get();
        if (std::erase_if(drawings, [&id](const DrawingPath &path) { return path.id == id; }) > 0) {
            writeDrawings(std::move(drawings));
        }
    }
    if (m_view.removeTextField)
        m_view.removeTextField();
}

bool DrawViewModel::doCommand(Command command) {
    if (command == Command::other)
        return false;
    // Escape keeps what was typed, as Return does.
    if (m_view.makeFirstResponder)
        m_view.makeFirstResponder();
    commitActiveText();
    if (m_parent)
        write(m_parent->tool, DrawingTool::pen);
    return true;
}

std::optional<DrawingPath> DrawViewModel::gesture() const {
    if (!m_parent || m_currentPoints.empty())
        return std::nullopt;
    const DrawingTool tool = m_parent->tool.get();
    DrawingPath path = blank(*m_parent, tool);
    path.points = m_currentPoints;
    if (tool == DrawingTool::eraser) {
        path.color = Qt::transparent;
        path.lineWidth = eraserWidth;
    }
    return path;
}

QRectF DrawViewModel::gestureArea() const {
    const std::optional<DrawingPath> path = gesture();
    return path ? drawingBounds(*path, path->points, false) : QRectF();
}

void DrawViewModel::redrawGesture(const QRectF &area) {
    if (m_view.redrawGesture && !area.isEmpty())
        m_view.redrawGesture(area);
}

} // namespace tavrine
