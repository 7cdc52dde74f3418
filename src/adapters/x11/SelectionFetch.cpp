#include "adapters/x11/SelectionFetch.h"

#include "adapters/pasteboard/PasteboardImage.h"
#include "adapters/pasteboard/PasteboardTypes.h"
#include "ports/Pasteboard.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr int maxQuestions = 3; // see `SelectionLimits::askAgain`

constexpr auto copiedFiles = "x-special/gnome-copied-files";
constexpr auto cutMark = "application/x-kde-cutselection"; ///< "1" beside files that wait to be moved

} // namespace

SelectionFetch::SelectionFetch(XConnection &connection, const SelectionLimits &limits, SecretDigests &secrets,
                               xcb_timestamp_t time, Hooks hooks)
    : m_connection(connection), m_limits(limits), m_secrets(secrets), m_time(time), m_hooks(std::move(hooks)),
      m_window(connection.createWindow()), m_phaseStart(std::chrono::steady_clock::now()) {
    m_transfer = std::make_unique<SelectionTransfer>(m_connection, m_window, m_connection.atoms().targets, m_time,
                                                     qsizetype{m_limits.targets} * 4, Excess::cutOff);
}

SelectionFetch::~SelectionFetch() {
    if (m_hasOpenTransfer || (m_transfer && m_transfer->mayStillBeWritten()))
        m_connection.retireWindow(m_window);
    else
        m_connection.destroyWindow(m_window);
}

void SelectionFetch::onSelectionNotify(const xcb_selection_notify_event_t &event) {
    if (!m_transfer || !isRunning())
        return;
    m_transfer->onSelectionNotify(event);
    afterTransfer();
}

void SelectionFetch::onPropertyNotify(const xcb_property_notify_event_t &event) {
    if (!m_transfer || !isRunning())
        return;
    m_transfer->onPropertyNotify(event);
    afterTransfer();
}

void SelectionFetch::afterTransfer() {
    if (m_transfer->isRunning())
        return;
    const std::unique_ptr<SelectionTransfer> transfer = std::move(m_transfer);
    m_hasOpenTransfer = m_hasOpenTransfer || transfer->mayStillBeWritten();
    const bool isDone = transfer->state() == SelectionTransfer::State::done;
    if (m_stage == Stage::targets) {
        takeTargets(isDone ? transfer->takeValue() : PropertyValue{});
        return;
    }
    if (m_stage == Stage::secret) {
        takeSecret(isDone ? transfer->takeValue() : PropertyValue{});
        return;
    }
    if (isDone)
        takeContents(transfer->takeValue());
    advance();
}

void SelectionFetch::takeTargets(const PropertyValue &value) {
    // Some old owners give the list the type TARGETS; everyone accepts that.
    const bool isList =
        value.format == 32 && (value.type == XCB_ATOM_ATOM || value.type == m_connection.atoms().targets);
    const QList<std::uint32_t> atoms = selection::parseAtoms(isList ? value.bytes : QByteArray(), m_limits.targets);
    const QList<QByteArray> names = m_connection.atomNames(atoms);
    bool isConcealed = false;
    for (qsizetype i = 0; i < names.size(); ++i) {
        if (names[i].isEmpty() || isProtocolTarget(names[i]))
            continue;
        m_targets.append(names[i]);
        m_atoms.insert(names[i], atoms[i]);
        isConcealed = isConcealed || isConcealedTarget(names[i]);
    }
    m_contents.types = pasteboardTypesOf(m_targets);
    if (isConcealed || m_targets.isEmpty()) {
        m_stage = Stage::finished;
        publish();
        if (const auto text = isConcealed ? nextWanted(textTargets()) : std::nullopt) {
            m_stage = Stage::secret;
            ask(*text, SecretDigests::longestBytes);
        }
        return;
    }
    m_stage = Stage::text;
    advance();
}

void SelectionFetch::takeContents(PropertyValue value) {
    if (value.type == 0 || value.bytes.isEmpty())
        return; // that is how some toolkits say no
    // Programs give one text under five names. Equal bytes are held and counted once.
    for (const Received &other : m_received) {
        if (other.bytes == value.bytes) {
            value.bytes = other.bytes;
            m_receivedBytes -= value.bytes.size();
            break;
        }
    }
    m_receivedBytes += value.bytes.size();
    m_received.push_back({m_current, m_atoms.value(m_current), value.type, value.format, std::move(value.bytes)});
}

void SelectionFetch::takeSecret(PropertyValue value) {
    const auto encoding = selection::textEncoding(m_current, m_connection.atomNames({value.type}).first());
    if (encoding && value.format == 8)
        m_secrets.remember(value.bytes, *encoding);
    wipe(value.bytes);
    m_stage = Stage::finished;
}

void SelectionFetch::makeOthersFrom(const Received &best, bool (*isForm)(const QByteArray &)) {
    for (const QByteArray &target : std::as_const(m_targets)) {
        if (!isForm(target) || m_asked.contains(target))
            continue;
        m_asked.append(target);
        m_siblings.push_back({target, best.bytes});
    }
}

void SelectionFetch::conceal() {
    for (Received &received : m_received)
        wipe(received.bytes);
    m_received.clear();
    m_contents.types.append(QLatin1String(pasteboardType::concealed));
    m_stage = Stage::finished;
    publish();
}

void SelectionFetch::advance() {
    if (m_stage == Stage::text)
        advanceText();
    if (m_stage == Stage::image)
        advanceImage();
    if (m_stage == Stage::files)
        advanceFiles();
    if (m_stage == Stage::rest)
        advanceRest();
}

void SelectionFetch::advanceText() {
    if (m_transfer)
        return;
    if (const Received *got = find(m_current); got && got->format == 8) {
        const QList<QByteArray> typeName = m_connection.atomNames({got->type});
        const auto encoding = selection::textEncoding(got->target, typeName.first());
        if (encoding && m_secrets.contains(got->bytes, *encoding)) {
            conceal();
            return;
        }
        if (encoding && !selection::withoutTerminators(got->bytes).isEmpty()) {
            m_contents.text = got->bytes;
            m_contents.encoding = *encoding;
            if (*encoding == selection::TextEncoding::utf8)
                makeOthersFrom(*got, selection::isTextForm);
        }
    }
    const auto next = m_contents.text.isEmpty() ? nextWanted(textTargets()) : std::nullopt;
    if (next)
        ask(*next);
    else
        m_stage = Stage::image;
}

void SelectionFetch::advanceImage() {
    if (m_transfer)
        return;
    bool isWhole = false;
    if (const Received *got = find(m_current); got && got->format == 8 && imageTargets().contains(m_current) &&
                                               pasteboardImage::hasUsableHeader(got->bytes, m_limits.imagePixels)) {
        m_contents.images.append(got->bytes);
        isWhole = pasteboardImage::seemsWhole(got->bytes);
        if (isWhole && pasteboardImage::isWithoutLoss(got->bytes))
            makeOthersFrom(*got, selection::isPictureForm);
    }
    const auto next = isWhole ? std::nullopt : nextWanted(imageTargets());
    if (next) {
        ask(*next);
    } else if (isWhole) {
        publish();
    } else {
        m_stage = Stage::files;
    }
}

void SelectionFetch::advanceFiles() {
    if (m_transfer)
        return;
    if (const Received *got = find(m_current); got && fileTargets().contains(m_current)) {
        const QList<QByteArray> paths = selection::parseLocalPaths(got->bytes, selection::hostName(), m_limits.files);
        if (!paths.isEmpty()) {
            m_stage = Stage::imageFile;
            m_hooks.readImageFile(paths);
            return;
        }
    }
    if (const auto next = nextWanted(fileTargets()))
        ask(*next);
    else
        publish();
}

void SelectionFetch::onImageFile(std::optional<QByteArray> bytes) {
    if (m_stage != Stage::imageFile)
        return;
    if (bytes && pasteboardImage::hasUsableHeader(*bytes, m_limits.imagePixels))
        m_contents.images.append(std::move(*bytes));
    if (m_hasOwnerEnded) {
        giveUp(); // nobody is there to be asked for the rest
        return;
    }
    publish();
    advance();
}

void SelectionFetch::advanceRest() {
    if (m_transfer)
        return;
    const bool hasRoom = m_receivedBytes < m_limits.changeBytes;
    if (const auto next = hasRoom ? nextWanted(m_targets) : std::nullopt)
        ask(*next);
    else
        m_stage = Stage::finished;
}

void SelectionFetch::ask(const QByteArray &target) {
    ask(target, std::min(m_limits.transferBytes, m_limits.changeBytes - m_receivedBytes));
}

void SelectionFetch::ask(const QByteArray &target, qsizetype maxBytes) {
    m_current = target;
    m_asked.append(target);
    m_transfer = std::make_unique<SelectionTransfer>(m_connection, m_window, m_atoms.value(target), m_time,
                                                     std::max<qsizetype>(maxBytes, 0));
}

void SelectionFetch::publish() {
    if (m_stage != Stage::finished)
        m_stage = Stage::rest;
    if (m_isPublished)
        return;
    m_isPublished = true;
    m_phaseStart = std::chrono::steady_clock::now();
    m_hooks.onReadable(m_contents);
}

void SelectionFetch::giveUp() {
    m_stage = Stage::finished;
    publish();
}

void SelectionFetch::ownerEnded() {
    if (!isRunning())
        return;
    if (!m_isPublished) { // only what is here still stands anywhere
        QList<QByteArray> targets;
        for (const Received &received : m_received)
            targets.append(received.target);
        for (const selection::Sibling &sibling : m_siblings)
            targets.append(sibling.target);
        m_contents.types = pasteboardTypesOf(targets);
    }
    m_hasOwnerEnded = true;
    if (m_stage != Stage::imageFile)
        giveUp();
}

std::optional<SelectionFetch::TimePoint> SelectionFetch::deadline() const {
    if (!isRunning())
        return std::nullopt;
    const TimePoint total = m_phaseStart + m_limits.total;
    if (!m_transfer)
        return total;
    if (m_transfer->state() != SelectionTransfer::State::asked)
        return std::min(total, m_transfer->lastProgress() + m_limits.stall);
    const int questions = mayBeAskedAgain() ? m_transfer->questions() : maxQuestions;
    const auto patience = questions == 1   ? std::min(m_limits.askAgain, m_limits.answer / 2)
                          : questions == 2 ? m_limits.answer / 2
                                           : m_limits.answer;
    return std::min(total, m_transfer->lastProgress() + patience);
}

bool SelectionFetch::mayBeAskedAgain() const {
    return m_stage == Stage::targets || m_stage == Stage::text || m_stage == Stage::files;
}

void SelectionFetch::expire(TimePoint now) {
    const auto due = deadline();
    if (!due || *due > now)
        return;
    if (m_stage == Stage::imageFile)
        onImageFile(std::nullopt); // a slow file system, which is not the owner's doing
    else if (m_transfer && m_transfer->state() == SelectionTransfer::State::asked && mayBeAskedAgain() &&
             m_transfer->questions() < maxQuestions && now < m_phaseStart + m_limits.total)
        m_transfer->askAgain();
    else
        giveUp();
}

std::optional<QByteArray> SelectionFetch::nextWanted(const QList<QByteArray> &candidates) const {
    const auto isWanted = [this](const QByteArray &target) {
        return m_atoms.contains(target) && !m_asked.contains(target);
    };
    for (const QByteArray &target : candidates) {
        if (!isWanted(target))
            continue;
        if (target != copiedFiles)
            return target;
        if (isWanted(cutMark))
            return cutMark;
        if (const Received *mark = find(cutMark); !mark || !mark->bytes.startsWith('1'))
            return target;
    }
    return std::nullopt;
}

const Received *SelectionFetch::find(const QByteArray &target) const {
    const auto found = std::find_if(m_received.begin(), m_received.end(),
                                    [&](const Received &received) { return received.target == target; });
    return found != m_received.end() ? &*found : nullptr;
}

} // namespace tavrine
