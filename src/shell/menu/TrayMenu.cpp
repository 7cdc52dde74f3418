#include "shell/menu/TrayMenu.h"

#include "base/DesktopWords.h"
#include "shell/Shell.h"
#include "shell/StatusMenu.h"
#include "shell/menu/QuickActionsGridView.h"
#include "shell/menu/StatusMenuView.h"
#include "shell/tools/Tools.h"
#include "utilities/awake/KeepAwakeControlModel.h"
#include "utilities/awake/KeepAwakeControlView.h"
#include "utilities/lofi/LofiPlayerModel.h"

#include <algorithm>

namespace tavrine {
namespace {

// Lines are known to trays by numbers: one for each quick action, one for a note, and one for each entry.
constexpr int firstActionId = 1;
constexpr int pausedNoteId = 50;
constexpr int firstEntryId = 100;

/// None where it chooses nothing while the menu is closed: a tray that draws the menu shows keys and hears none.
QStringList keysOf(KeyEquivalent keyEquivalent) {
    if (keyEquivalent.character.isNull() || !keyEquivalent.hasShift)
        return {};
    return {QStringLiteral("Super"), QStringLiteral("Shift"), QString(keyEquivalent.character.toUpper())};
}

} // namespace

TrayMenu::TrayMenu(Shell &shell, Tools &tools, StatusMenu &entries, Actions actions, QObject *parent)
    : QObject(parent), m_shell(shell), m_tools(tools), m_entries(entries), m_actions(std::move(actions)),
      m_model(shell.flags(), shell.defaults(), shell.center(), shell.time(), modelActions()) {
    connect(&m_model, &QuickActionsModel::changed, this, &TrayMenu::tellSoon);
    connect(&tools.keepAwake(), &KeepAwakeTool::showAdvancedPanelChanged, this, &TrayMenu::animateHeight);
}

TrayMenu::~TrayMenu() = default;

/// Once for all that changes within a turn: one choice may write several preferences.
void TrayMenu::tellSoon() {
    if (std::exchange(m_isTelling, true))
        return;
    m_shell.time().async(this, [this] {
        m_isTelling = false;
        if (m_panel.ifMade() && panel().isOpen())
            panel().height().setSoon();
        m_shell.desktop().statusItem().menuChanged();
    });
}

StatusMenuPanel &TrayMenu::panel() {
    return m_panel.get([this] {
        return std::make_unique<StatusMenuPanel>(
            panelPorts(), [this](QuickActionsHeight &height) { return makeView(height); }, m_actions.willOpen);
    });
}

void TrayMenu::cancelTracking() {
    if (m_panel.ifMade())
        panel().cancelTracking();
}

std::vector<StatusMenuLine> TrayMenu::lines() {
    m_entries.refreshClipboardMenuItem();
    m_entries.refreshEmojiMenuItem();
    std::vector<StatusMenuLine> lines;
    for (const LayoutRow &row : m_model.rows()) {
        for (const QuickAction action : row.items) {
            const auto ofIt = linesOf(action);
            lines.insert(lines.end(), ofIt.begin(), ofIt.end());
        }
    }
    const auto &entries = m_entries.entries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].item == StatusMenuItem::separator)
            lines.emplace_back();
        else
            lines.push_back({.id = firstEntryId + static_cast<int>(i),
                             .label = inDesktopWords(entries[i].title),
                             .isEnabled = entries[i].isEnabled,
                             .isOn = {},
                             .keys = keysOf(entries[i].keyEquivalent)});
    }
    return lines;
}

std::vector<StatusMenuLine> TrayMenu::linesOf(QuickAction action) {
    if (action == QuickAction::loFi)
        return m_toldMusic = musicLines();
    if (action == QuickAction::keepAwake)
        return m_toldAwake = awakeLines();
    return {{.id = firstActionId + static_cast<int>(action),
             .label = inDesktopWords(QLatin1String(textOf(action).title)),
             .isOn = m_model.isToggle(action) ? std::optional(m_model.isOn(action)) : std::nullopt}};
}

/// What a press does and with what; while a track is fetched, how far that is.
std::vector<StatusMenuLine> TrayMenu::musicLines() {
    const LofiPlayerModel &model = music();
    const QString text =
        model.isDownloading() ? model.statusLine() : model.playActionName() + QStringLiteral(": ") + model.title();
    return {{.id = firstActionId + static_cast<int>(QuickAction::loFi),
             .label = inDesktopWords(text),
             .isEnabled = !model.isDownloading(),
             .isOn = {}}};
}

/// The switch with what it keeps awake, and why it rests.
std::vector<StatusMenuLine> TrayMenu::awakeLines() {
    const KeepAwakeManager &manager = awake();
    const auto mode = QLatin1String(rowOf(manager.selectedMode()).label);
    std::vector<StatusMenuLine> lines{{.id = firstActionId + static_cast<int>(QuickAction::keepAwake),
                                       .label = inDesktopWords(QStringLiteral("Keep Awake: ") + mode),
                                       .isOn = manager.isHolding()}};
    if (manager.autoDisabledForBattery())
        lines.push_back({.id = pausedNoteId,
                         .label = inDesktopWords(QLatin1String(KeepAwakeControlModel::pausedNote)),
                         .isEnabled = false,
                         .isOn = {}});
    return lines;
}

LofiPlayerModel &TrayMenu::music() {
    return m_music.get([this] {
        auto model = m_tools.lofi().makeModel();
        connect(model.get(), &LofiPlayerModel::changed, this, &TrayMenu::tellOfCards);
        return model;
    });
}

KeepAwakeManager &TrayMenu::awake() {
    KeepAwakeManager &manager = m_tools.keepAwake().manager();
    if (!m_awakeChanges)
        m_awakeChanges = connect(&manager, &KeepAwakeManager::changed, this, &TrayMenu::tellOfCards);
    return manager;
}

/// Nobody is told of what shows in no line, as the next thousandth of a download.
void TrayMenu::tellOfCards() {
    if ((!m_toldMusic.empty() && m_toldMusic != musicLines()) || (!m_toldAwake.empty() && m_toldAwake != awakeLines()))
        tellSoon();
}

void TrayMenu::choose(int id) {
    m_shell.time().async(this, [this, id] {
        const auto lines = this->lines();
        const auto line = std::ranges::find(lines, id, &StatusMenuLine::id);
        if (id == 0 || line == lines.end() || !line->isEnabled)
            return; // gone, or switched off, since the tray drew it
        if (id < firstEntryId)
            run(static_cast<QuickAction>(id - firstActionId));
        else
            m_entries.entries()[static_cast<std::size_t>(id - firstEntryId)].action();
    });
}

void TrayMenu::run(QuickAction action) {
    if (action == QuickAction::loFi)
        music().toggle();
    else if (action == QuickAction::keepAwake)
        awake().toggle();
    else
        m_model.run(action);
}

StatusMenuPanel::Ports TrayMenu::panelPorts() {
    Desktop &desktop = m_shell.desktop();
    return {m_shell.panelWindows(),         desktop.screens(),   desktop.eventMonitors(),
            desktop.applicationActivator(), desktop.workspace(), m_shell.time()};
}

QuickActionsModel::Actions TrayMenu::modelActions() {
    return {.isBuilt = [this](QuickAction action) { return isBuilt(action); },
            .mayCaptureScreen = [this] { return m_shell.windowManager().mayCaptureScreen(); },
            .mayRecordScreen = [this] { return m_shell.windowManager().mayRecordScreen(); },
            .startSnip = [this] { m_tools.snipping().startCapture(); },
            .startScreenRecording = [this] { m_tools.screenRecorder().startScreenRecording(); },
            .startQrScan = [this] { m_tools.snipping().startQrScan(); },
            .openEditor = m_actions.openEditor,
            .openSettings = m_actions.openSettings,
            .bringSettingsForward = m_actions.bringSettingsForward,
            .canClean = [this] { return m_shell.desktop().eventTaps().areThere(); },
            .isCleaning = [this] { return m_tools.cleaningMode().manager().isCleaning(); },
            .toggleCleaning = [this] { toggleCleaning(); },
            .onDismissMenu = [this] { cancelTracking(); }};
}

/// Whatever the tile shows: a block that is still waited for is given up as well.
void TrayMenu::toggleCleaning() {
    KeyboardCleanerManager &cleaner = m_tools.cleaningMode().manager();
    connect(&cleaner, &KeyboardCleanerManager::isCleaningPublished, &m_model, &QuickActionsModel::cleaningChanged,
            Qt::UniqueConnection);
    if (cleaner.isCleaning() || cleaner.isStarting())
        cleaner.stopCleaning();
    else
        cleaner.startCleaning();
}

/// A place whose tool there is not yet stays out of the menu.
bool TrayMenu::isBuilt(QuickAction action) {
    switch (action) {
    case QuickAction::loFi:
        return m_tools[Feature::loFi] != nullptr;
    case QuickAction::keepAwake:
        return m_tools[Feature::keepAwake] != nullptr;
    case QuickAction::screenRecord:
        return m_tools[Feature::screenRecorder] != nullptr;
    case QuickAction::cleanMode:
        return m_tools[Feature::cleaningMode] != nullptr;
    case QuickAction::screenshot:
    case QuickAction::qrScan:
    case QuickAction::settings:
    case QuickAction::editor:
        break;
    }
    return true;
}

QWidget *TrayMenu::makeCard(QuickAction action) {
    if (action == QuickAction::loFi)
        return m_tools.lofi().makeMiniPlayer([this] { cancelTracking(); });
    KeepAwakeControlView *card = m_tools.keepAwake().makeControlView([this] { cancelTracking(); });
    connect(card, &KeepAwakeControlView::measureChanged, this, &TrayMenu::animateHeight);
    return card;
}

void TrayMenu::animateHeight() {
    if (m_panel.ifMade() && panel().isOpen())
        panel().height().animate(QuickActionsHeight::panelLength);
}

StatusMenuView *TrayMenu::makeView(QuickActionsHeight &height) {
    auto *grid = new QuickActionsGrid(m_model, [this](QuickAction action) { return makeCard(action); });
    return new StatusMenuView(m_entries, grid, height);
}

} // namespace tavrine
