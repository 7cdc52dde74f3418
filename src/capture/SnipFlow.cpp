#include "capture/SnipFlow.h"

#include "base/Print.h"
#include "base/Time.h"
#include "capture/ScreenSnipper.h"
#include "capture/SnipDragFile.h"
#include "panels/Placement.h"
#include "ports/Pasteboard.h"
#include "upload/Uploads.h"

#include <QPointer>

#include <utility>

namespace tavrine {
namespace {

PanelDescription cardDescription() {
    return {.title = QStringLiteral("Screenshot"),
            .contentSize = {SnipFlow::cardWidth, SnipFlow::cardHeight},
            .level = windowLevel::floating,
            .collectionBehavior = collectionBehavior::canJoinAllSpaces | collectionBehavior::transient |
                                  collectionBehavior::fullScreenAuxiliary,
            .canBecomeKey = false, // the person goes on typing elsewhere
            .hasShadow = false};
}

PanelDescription cardWithKeyboardDescription() {
    PanelDescription description = cardDescription();
    description.canBecomeKey = true;
    return description;
}

PanelDescription dialogDescription() {
    PanelDescription description = cardDescription();
    description.title = QStringLiteral("Save Screenshot");
    description.contentSize = {SnipFlow::dialogWidth, SnipFlow::dialogHeight};
    description.level = windowLevel::floating + 1;
    description.canBecomeKey = true; // it was asked for, and Return and Escape answer it
    return description;
}

/// The appearance may be chosen freely; the end is a rule.
constexpr FloatingPanel::Motion motion{
    .fadeIn = Seconds{0.18}, .timingIn = look::easeOut, .fadeOut = Seconds{0.16}, .timingOut = look::easeIn};

/// It is there already.
constexpr FloatingPanel::Motion motionWithKeyboard{.fadeOut = motion.fadeOut, .timingOut = motion.timingOut};

QRectF usableForTool(const Screens &screens) {
    const auto screen = screenForTool(screens);
    return screen ? usableFrame(*screen) : QRectF();
}

/// A recording that waits there for the person is not covered.
FloatingPanel::Placement inTheCorner(const TakenCorner &corner) {
    return [&corner](const Screens &screens, QSizeF size) {
        const QRectF usable = usableForTool(screens);
        constexpr double margin = SnipFlow::cardMargin;
        return corner.clearOf(usable, QRectF(usable.topLeft() + QPointF(margin, margin), size), margin);
    };
}

std::optional<QRectF> inTheMiddle(const Screens &screens, QSizeF size) {
    return centredIn(usableForTool(screens), size);
}

template <class Action, class... Arguments>
void callIfThere(const Action &action, Arguments &&...arguments) {
    if (action)
        action(std::forward<Arguments>(arguments)...);
}

} // namespace

SnipFlow::SnipFlow(Ports ports, Actions actions, Views views)
    : m_ports(std::move(ports)), m_actions(std::move(actions)), m_views(std::move(views)),
      m_files(m_ports.fileQueue, m_ports.time),
      m_card({m_ports.windows, m_ports.screens, m_ports.time},
             {.description = cardDescription(), .placement = inTheCorner(m_ports.corner), .motion = motion}),
      m_cardWithKeyboard({m_ports.windows, m_ports.screens, m_ports.time},
                         {.description = cardWithKeyboardDescription(),
                          .placement = inTheCorner(m_ports.corner),
                          .motion = motionWithKeyboard}),
      m_dialog({m_ports.windows, m_ports.screens, m_ports.time},
               {.description = dialogDescription(), .placement = inTheMiddle, .motion = motion}) {
    m_ports.screen.setWindows(this);
    m_ports.corner.setOnTaken([this] {
        m_card.placeAgain();
        m_cardWithKeyboard.placeAgain();
    });
    m_ports.snipper.setOnEnd([this] { m_ports.screen.lookEnded(); });
    for (FloatingPanel *card : {&m_card, &m_cardWithKeyboard})
        card->setOnClosed([this] { dismissSnipPreview(Dismissal::animated); });
    m_dialog.setOnClosed([this] {
        if (const auto model = m_dialogModel)
            model->cancel();
    });
}

SnipFlow::~SnipFlow() {
    m_ports.snipper.setOnEnd({});
    m_ports.corner.setOnTaken({});
    m_ports.screen.setWindows(nullptr);
}

void SnipFlow::startSnip() {
    if (!m_actions.mayCaptureScreen || m_actions.mayCaptureScreen())
        startCapture();
}

void SnipFlow::startCapture() {
    if (std::exchange(m_isStarting, true))
        return;
    m_ports.screen.clearFor([self = QPointer(this)] {
        if (!self)
            return;
        self->m_isStarting = false;
        self->m_ports.snipper.startCapture();
    });
}

bool SnipFlow::setAside() {
    const bool wasFirstShown = m_card.setAside(); // either may still be fading
    const bool wasCardShown = m_cardWithKeyboard.setAside() || wasFirstShown;
    const bool wasDialogShown = m_dialog.setAside();
    if (m_cardModel)
        m_cardModel->setAside(true);
    return wasCardShown || wasDialogShown;
}

void SnipFlow::bringBack() {
    m_card.bringBack();
    m_cardWithKeyboard.bringBack();
    if (m_cardModel)
        m_cardModel->setAside(false);
    m_dialog.bringBack(); // last: it is what waits for the person
}

void SnipFlow::presentSnip(const QImage &image) {
    printLine(QStringLiteral("DEBUG: AppDelegate - Received snip image callback! Showing preview..."));
    writeToPasteboard(image);
    // The history learns of the capture as of any other copy; without a place for its picture there is no card.
    if (!m_actions.saveImage)
        return;
    if (qint64{image.width()} * image.height() > Pasteboard::largePixels)
        storeElsewhere(image);
    else if (m_actions.saveImage(image))
        showSnipPreview(image);
}

/// Encoding a whole screen takes longer than a hot key may wait. The capture lasts until its card, or the last one's
/// would come back for that moment.
void SnipFlow::storeElsewhere(const QImage &image) {
    m_ports.screen.lookGoesOn();
    if (m_storings++ == 0)
        m_storing.emplace(QStringLiteral("com.tavrine.snip.store"));
    m_storing->async([this, image] {
        const bool isStored = m_actions.saveImage(image).has_value();
        m_ports.time.async(this, [this, image, isStored] {
            if (--m_storings == 0)
                m_storing.reset();
            if (isStored)
                showSnipPreview(image);
            m_ports.screen.lookEnded();
        });
    });
}

void SnipFlow::writeToPasteboard(const QImage &image) {
    m_ports.pasteboard.clearContents();
    m_ports.pasteboard.writeImage(image);
}

void SnipFlow::showSnipPreview(const QImage &image) {
    dismissSnipPreview(Dismissal::atOnce);
    m_cardModel = std::make_shared<SnippetPreviewModel>(
        image, cardActions(image), m_ports.time,
        m_ports.uploads.makeButton([image] { return image; }, UploadButton::AfterLink::dismissView));
    m_card.build(m_views.card ? m_views.card(m_cardModel) : nullptr);
    m_card.show();
    m_cardModel->appear();
}

void SnipFlow::giveCardKeyboard() {
    if (!m_cardModel || m_cardModel->isAside()) // it makes room for a look at the screen
        return;
    if (!m_cardWithKeyboard.isBuilt()) {
        m_card.release(Dismissal::atOnce);
        m_cardWithKeyboard.build(m_views.card ? m_views.card(m_cardModel) : nullptr);
    }
    m_cardWithKeyboard.show();
}

SnippetPreviewModel::Actions SnipFlow::cardActions(const QImage &image) {
    return {.onNewSnip =
                [this] {
                    dismissSnipPreview(Dismissal::animated);
                    m_ports.time.asyncAfter(newSnipDelay, this, [this] { startCapture(); });
                },
            .onCopy = [this, image] { writeToPasteboard(image); },
            .onSave = [this, image](const Completion &completion) { saveSnip(image, completion); },
            .onEdit =
                [this, image] {
                    dismissSnipPreview(Dismissal::animated);
                    callIfThere(m_actions.openEditorDirectly, image);
                },
            .onGetText = [this, image] { callIfThere(m_actions.getTextFromSnip, image); },
            .onDismiss = [this] { dismissSnipPreview(Dismissal::animated); },
            .beginDragFile = [this, image] { return beginDragFile(image); },
            .finishDragFile = [this] { m_files.finish(); }};
}

QString SnipFlow::beginDragFile(const QImage &image) {
    const QString &temporary = m_ports.folders.temporary;
    Time &time = m_ports.time;
    removeOldDrags(temporary, time.now());
    const QString path = freshDragFile(temporary, snipFileName());
    if (path.isEmpty())
        return path;
    m_files.saveAs(path, m_files.prepare(image, {}), FileRights::ownerOnly, [](const auto &) {});
    time.asyncAfter(dragFileLife + Seconds(1), [temporary, &time] { removeOldDrags(temporary, time.now()); });
    return path;
}

void SnipFlow::dismissSnipPreview(Dismissal dismissal) {
    m_card.release(dismissal);
    m_cardWithKeyboard.release(dismissal);
    if (const auto model = std::exchange(m_cardModel, nullptr)) {
        model->stop();
        m_ports.time.async(this, [model] {}); // its own button may be what closes it
    }
}

} // namespace tavrine
