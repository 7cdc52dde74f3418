#include "shell/updates/SoftwareUpdater.h"

#include "base/Print.h"
#include "ports/UrlOpener.h"
#include "ports/UserNotifications.h"
#include "shell/updates/UpdatePreferences.h"

#include <QPointer>

#include <utility>

namespace tavrine {
namespace {

const auto title = QStringLiteral("Tavrine");
const auto looking = QStringLiteral("Tavrine is looking for a newer version…");
const auto identifier = QStringLiteral("updates"); // what is told later takes the place of what was told before

} // namespace

SoftwareUpdater::SoftwareUpdater(const Ports &ports, const QString &version) : m_ports(ports), m_version(version) {}

void SoftwareUpdater::start() {
    m_ports.time.asyncAfter(firstLook, this, [this] {
        m_pulse = m_ports.time.repeat(pulse, [this] { lookIfDue(); });
        lookIfDue();
    });
}

void SoftwareUpdater::lookIfDue() {
    const Date now = m_ports.time.now();
    const Date last = preference::updatesLastCheck.get(m_ports.defaults);
    const bool isDue = last > now || now - last >= day;
    if (isDue && m_state == State::idle && preference::updatesCheckAutomatically.get(m_ports.defaults))
        look(State::lookingByItself);
}

void SoftwareUpdater::checkForUpdates() {
    if (m_state == State::lookingForPerson)
        return;
    look(State::lookingForPerson);
    m_ports.time.asyncAfter(quietLook, m_check.get(), [this] { say(looking, {}); });
}

void SoftwareUpdater::look(State state) {
    m_state = state;
    m_began = m_ports.time.now();
    m_check = std::make_unique<UpdateCheck>(UpdateCheck::Ports{m_ports.time, m_ports.packages, m_ports.feed},
                                            state == State::lookingForPerson ? PackageUpdates::Start::ifNeeded
                                                                             : PackageUpdates::Start::never,
                                            m_version, [this](const UpdateOutcome &outcome) { onFinished(outcome); });
    Q_EMIT changed();
}

QString SoftwareUpdater::status() const {
    return m_state == State::lookingForPerson ? looking : m_lastSentence;
}

void SoftwareUpdater::onFinished(const UpdateOutcome &outcome) {
    const State state = std::exchange(m_state, State::idle);
    m_check.reset();
    if (isAnswered(outcome.kind))
        preference::updatesLastCheck.set(m_ports.defaults, m_began);
    m_lastSentence = sentenceOf(outcome, m_version);
    Q_EMIT changed();
    if (state == State::lookingForPerson)
        tell(outcome, state);
    else
        tellByItself(outcome);
}

void SoftwareUpdater::tellByItself(const UpdateOutcome &outcome) {
    if (isFound(outcome.kind) && outcome.version != preference::updatesToldVersion.get(m_ports.defaults) &&
        preference::updatesCheckAutomatically.get(m_ports.defaults))
        tell(outcome, State::lookingByItself);
}

/// A version counts as told of when it was shown: a line that nobody reads is repeated tomorrow.
void SoftwareUpdater::tell(const UpdateOutcome &outcome, State asked) {
    Echoes echoes;
    if (outcome.kind == UpdateOutcome::Kind::download)
        echoes.pressed = [&opener = m_ports.urlOpener, url = outcome.url] { opener.openUrl(url); };
    if (isFound(outcome.kind))
        echoes.shown = [this, version = outcome.version] {
            preference::updatesToldVersion.set(m_ports.defaults, version);
        };
    if (asked == State::lookingForPerson)
        echoes.unshown = [this] { Q_EMIT unheard(); };
    say(sentenceOf(outcome, m_version), std::move(echoes));
}

/// As a notification, or as a line where the desktop shows none or does not say in time whether it does.
void SoftwareUpdater::say(const QString &sentence, Echoes echoes) {
    const auto isSaid = std::make_shared<bool>(false);
    const auto print = [sentence, unshown = std::move(echoes.unshown)] {
        printLine(title + QStringLiteral(": ") + sentence);
        if (unshown)
            unshown();
    };
    m_ports.notifications.requestAuthorization([isSaid, print, sentence, echoes,
                                                self = QPointer(this)](bool isGranted) {
        if (!self || std::exchange(*isSaid, true))
            return;
        if (!isGranted)
            return print();
        self->m_ports.notifications.add({.identifier = identifier, .title = title, .body = sentence}, echoes.pressed);
        if (echoes.shown)
            echoes.shown();
    });
    m_ports.time.asyncAfter(longestAnswer, this, [isSaid, print] {
        if (!std::exchange(*isSaid, true))
            print();
    });
}

} // namespace tavrine
