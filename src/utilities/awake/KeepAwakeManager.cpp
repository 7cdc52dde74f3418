#include "utilities/awake/KeepAwakeManager.h"

#include "base/Print.h"
#include "ports/Calendar.h"
#include "ports/PowerSource.h"
#include "ports/UserNotifications.h"
#include "utilities/awake/KeepAwakePreferences.h"

#include <QPointer>

namespace tavrine {
namespace {

void print(const QString &line) {
    printLine(QStringLiteral("[KeepAwake] ") + line);
}

QString words(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString words(KeepAwakeMode mode) {
    return textOf(keepAwakeModeTexts, mode);
}

/// What the first source that tells it draws on; none when no source does.
std::optional<QString> stateOf(const QList<QVariantMap> &sources) {
    for (const QVariantMap &source : sources) {
        const QVariant state = source.value(QLatin1String(PowerSource::stateKey));
        if (state.typeId() == QMetaType::QString)
            return state.toString();
    }
    return std::nullopt;
}

TimeOfDay storedTime(const Preference<qint64> &preference, const UserDefaults &defaults) {
    return timeOfDay(preference.get(defaults), timeOfDay(preference.fallback, {}));
}

} // namespace

KeepAwakeManager::KeepAwakeManager(const Ports &ports) : m_ports(ports) {
    loadPreferences();
    m_ports.powerSource.whenKnown([self = QPointer(this)] {
        if (self)
            self->takeFirstReading();
    });
    m_powerPollTimer = m_ports.time.repeat(powerPollInterval, [this] { powerTick(); });
    if (m_scheduleEnabled)
        startScheduleTimer();
}

KeepAwakeManager::~KeepAwakeManager() {
    releaseAssertion();
}

// The power source.

bool KeepAwakeManager::readPowerSource() {
    const std::optional<QString> state = stateOf(m_ports.powerSource.sources());
    if (!state) {
        print(QStringLiteral("No battery power source found — assuming plugged in"));
        return true;
    }
    const bool isPluggedIn = *state == QLatin1String(PowerSource::acPower);
    print(QStringLiteral("IOPSPowerSourceState=") + *state + QStringLiteral(" pluggedIn=") + words(isPluggedIn));
    return isPluggedIn;
}

void KeepAwakeManager::publishPluggedIn(bool isPluggedIn) {
    m_ports.time.async(this, [this, isPluggedIn] {
        if (std::exchange(m_isPluggedIn, isPluggedIn) != isPluggedIn)
            Q_EMIT changed();
    });
}

/// The launch's. What was switched on before the desktop had told of a battery is judged now.
void KeepAwakeManager::takeFirstReading() {
    const bool isPluggedIn = readPowerSource();
    publishPluggedIn(isPluggedIn);
    if (!isHolding())
        return;
    warnIfLidNeedsPower(isPluggedIn);
    if (m_chargingOnly && !isPluggedIn)
        disable(); // on battery it would not have come on, and nothing is paused
}

void KeepAwakeManager::powerTick() {
    endPastSession();
    const bool isPluggedIn = readPowerSource();
    const bool wasPluggedIn = m_isPluggedIn;
    publishPluggedIn(isPluggedIn);
    if (m_selectedMode == KeepAwakeMode::lidClosed && isHolding() && wasPluggedIn && !isPluggedIn)
        notifyOfBattery();
    if (!m_chargingOnly)
        return;
    if (isHolding() && !isPluggedIn) {
        disable(Cause::battery);
    } else if (!isHolding() && m_autoDisabledForBattery && isPluggedIn) {
        setAutoDisabledForBattery(false);
        makeAssertion(Deadline::reset);
    }
}

void KeepAwakeManager::notifyOfBattery() {
    m_ports.notifications.requestAuthorization([self = QPointer(this)](bool isGranted) {
        if (!self || !isGranted)
            return;
        self->m_ports.notifications.add(
            {.identifier = QLatin1String(warningIdentifier),
             .title = QStringLiteral("Keep Awake Warning"),
             .body = QStringLiteral("Lid Closed mode is active but your Mac is now on battery. Connect power to "
                                    "maintain full performance.")});
    });
}

// The assertion.

void KeepAwakeManager::makeAssertion(Deadline deadline) {
    releaseAssertion();
    const KeepAwakeMode mode = m_selectedMode;
    // Once it is released the answer does not come any more, and with the manager it is released.
    m_assertionId =
        m_ports.assertions.createWithName(rowOf(mode).assertion, QLatin1String(assertionName),
                                          [this, mode, deadline](int result) { onCreated(result, mode, deadline); });
    Q_EMIT changed();
}

void KeepAwakeManager::onCreated(int result, KeepAwakeMode mode, Deadline deadline) {
    const bool isCreated = result == PowerAssertions::success;
    if (isCreated && mode == KeepAwakeMode::lidClosed)
        m_ports.assertions.setAppliesOnLidClose(m_assertionId);
    if (!isCreated)
        m_assertionId = 0;
    print(QStringLiteral("makeAssertion result=%1 id=%2 mode=%3").arg(result).arg(m_assertionId).arg(words(mode)));
    if (isCreated)
        startDurationTimer(deadline);
    else
        clearDurationTimer();
    setAwake(isCreated);
}

void KeepAwakeManager::releaseAssertion() {
    if (const quint32 id = std::exchange(m_assertionId, 0))
        m_ports.assertions.release(id);
}

void KeepAwakeManager::setAwake(bool isAwake) {
    if (std::exchange(m_isAwake, isAwake) != isAwake)
        Q_EMIT awakeStateChanged();
    Q_EMIT changed();
}

void KeepAwakeManager::setAutoDisabledForBattery(bool isPaused) {
    if (std::exchange(m_autoDisabledForBattery, isPaused) != isPaused)
        Q_EMIT changed();
}

void KeepAwakeManager::enable() {
    const bool isPluggedIn = readPowerSource();
    publishPluggedIn(isPluggedIn);
    print(QStringLiteral("enable() — mode: %1, pluggedIn: %2").arg(words(m_selectedMode), words(isPluggedIn)));
    warnIfLidNeedsPower(isPluggedIn);
    if (m_chargingOnly && !isPluggedIn)
        return;
    setAutoDisabledForBattery(false);
    makeAssertion(Deadline::reset);
}

void KeepAwakeManager::disable(Cause cause) {
    setAutoDisabledForBattery(cause == Cause::battery);
    releaseAssertion();
    clearDurationTimer();
    Q_EMIT changed();
    m_ports.time.async(this, [this] {
        if (!isHolding()) // it may have been asked for anew meanwhile, whose answer tells
            setAwake(false);
    });
}

void KeepAwakeManager::toggle() {
    if (isHolding())
        disable();
    else
        enable();
}

void KeepAwakeManager::setFeatureOn(bool isOn) {
    m_isFeatureOn = isOn;
    m_scheduleTimer.reset();
    if (!isOn)
        disable();
    else if (m_scheduleEnabled)
        startScheduleTimer();
}

/// It does not stand in the way: the mode works on battery as well, and the person is told what that means.
void KeepAwakeManager::warnIfLidNeedsPower(bool isPluggedIn) {
    if (m_selectedMode == KeepAwakeMode::lidClosed && !isPluggedIn)
        setShowLidClosedNoPowerWarning(true);
}

// The choices.

void KeepAwakeManager::setMode(KeepAwakeMode mode) {
    const bool isOther = std::exchange(m_selectedMode, mode) != mode;
    changePreference();
    if (isOther)
        Q_EMIT awakeStateChanged();
    if (!isHolding())
        return;
    const bool isPluggedIn = readPowerSource();
    publishPluggedIn(isPluggedIn);
    print(QStringLiteral("setMode(%1) while awake — pluggedIn: %2").arg(words(mode), words(isPluggedIn)));
    warnIfLidNeedsPower(isPluggedIn);
    makeAssertion(Deadline::kept);
}

void KeepAwakeManager::setDuration(KeepAwakeDuration duration) {
    m_selectedDuration = duration;
    changePreference();
    if (isHolding())
        startDurationTimer(Deadline::reset);
}

void KeepAwakeManager::setChargingOnly(bool chargingOnly) {
    m_chargingOnly = chargingOnly;
    changePreference();
    if (chargingOnly && isHolding() && !m_isPluggedIn) {
        disable(Cause::battery);
    } else if (!chargingOnly && m_autoDisabledForBattery) {
        setAutoDisabledForBattery(false);
        makeAssertion(Deadline::reset);
    }
}

void KeepAwakeManager::setScheduleEnabled(bool isEnabled) {
    m_scheduleEnabled = isEnabled;
    changePreference();
    m_scheduleTimer.reset();
    if (!isEnabled)
        return;
    checkSchedule();
    startScheduleTimer();
}

void KeepAwakeManager::setScheduleStart(TimeOfDay start) {
    m_scheduleStart = start;
    changePreference();
}

void KeepAwakeManager::setScheduleEnd(TimeOfDay end) {
    m_scheduleEnd = end;
    changePreference();
}

void KeepAwakeManager::setWeekdaysOnly(bool weekdaysOnly) {
    m_weekdaysOnly = weekdaysOnly;
    changePreference();
}

void KeepAwakeManager::setShowAdvancedPanel(bool isShown) {
    if (std::exchange(m_showAdvancedPanel, isShown) == isShown)
        return;
    Q_EMIT showAdvancedPanelChanged(isShown);
    Q_EMIT changed();
}

void KeepAwakeManager::setShowLidClosedNoPowerWarning(bool isWanted) {
    if (std::exchange(m_showLidClosedNoPowerWarning, isWanted) == isWanted)
        return;
    Q_EMIT showLidClosedNoPowerWarningChanged(isWanted);
    Q_EMIT changed();
}

// The timed session.

std::optional<Date> KeepAwakeManager::activeAwakeDeadline() const {
    if (!m_deadline)
        return std::nullopt;
    return m_ports.time.now() + (*m_deadline - m_ports.time.systemUptime());
}

void KeepAwakeManager::startDurationTimer(Deadline deadline) {
    m_durationTimer.reset();
    const std::optional<Seconds> length = rowOf(m_selectedDuration).length;
    if (!length) {
        m_deadline.reset();
        return;
    }
    const Seconds now = m_ports.time.systemUptime();
    if (deadline == Deadline::reset || !m_deadline)
        m_deadline = now + *length;
    const Seconds remaining = *m_deadline - now;
    if (remaining <= Seconds{0}) {
        disable();
        return;
    }
    // The timer itself goes with `disable`, which must not happen while it calls.
    m_durationTimer = m_ports.time.repeat(remaining, [this] {
        m_ports.time.async(this, [this, ended = m_deadline] {
            if (m_deadline && m_deadline == ended) // nobody has given the session another end meanwhile
                disable();
        });
    });
}

void KeepAwakeManager::clearDurationTimer() {
    m_durationTimer.reset();
    m_deadline.reset();
}

/// The timer does not count the time for which the machine was suspended.
void KeepAwakeManager::endPastSession() {
    if (isHolding() && m_deadline && *m_deadline <= m_ports.time.systemUptime())
        disable();
}

// The schedule.

void KeepAwakeManager::startScheduleTimer() {
    if (!m_isFeatureOn)
        return;
    m_scheduleTimer = m_ports.time.repeat(scheduleInterval, [this] { checkSchedule(); });
}

void KeepAwakeManager::checkSchedule() {
    if (!m_scheduleEnabled || !m_isFeatureOn)
        return;
    const DateComponents now = m_ports.calendar.components(m_ports.time.now());
    const bool isDayOff = m_weekdaysOnly && isWeekend(now);
    const bool isWanted = !isDayOff && isInside(m_scheduleStart, m_scheduleEnd, {now.hour, now.minute});
    if (isWanted && !isHolding())
        enable();
    else if (!isWanted && isHolding())
        disable();
}

// The preferences.

void KeepAwakeManager::loadPreferences() {
    const UserDefaults &defaults = m_ports.defaults;
    m_selectedMode = preference::keepAwakeMode.get(defaults);
    m_selectedDuration = preference::keepAwakeDuration.get(defaults);
    m_chargingOnly = preference::keepAwakeChargingOnly.get(defaults);
    m_scheduleEnabled = preference::keepAwakeScheduleEnabled.get(defaults);
    m_weekdaysOnly = preference::keepAwakeWeekdaysOnly.get(defaults);
    m_scheduleStart = storedTime(preference::keepAwakeScheduleStartSecs, defaults);
    m_scheduleEnd = storedTime(preference::keepAwakeScheduleEndSecs, defaults);
}

void KeepAwakeManager::save() {
    UserDefaults &defaults = m_ports.defaults;
    preference::keepAwakeMode.set(defaults, m_selectedMode);
    preference::keepAwakeDuration.set(defaults, m_selectedDuration);
    preference::keepAwakeChargingOnly.set(defaults, m_chargingOnly);
    preference::keepAwakeScheduleEnabled.set(defaults, m_scheduleEnabled);
    preference::keepAwakeWeekdaysOnly.set(defaults, m_weekdaysOnly);
    preference::keepAwakeScheduleStartSecs.set(defaults, secondsSinceMidnight(m_scheduleStart));
    preference::keepAwakeScheduleEndSecs.set(defaults, secondsSinceMidnight(m_scheduleEnd));
}

} // namespace tavrine
