#include "adapters/pasteboard/PasteboardFetch.h"

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

PasteboardFetch::PasteboardFetch(PasteboardOwner &owner, const SelectionLimits &limits, SecretDigests &secrets,
                                 Hooks hooks)
    : m_owner(owner), m_limits(limits), m_secrets(secrets), m_hooks(std::move(hooks)),
      m_phaseStart(std::chrono::steady_clock::now()) {}

PasteboardFetch::~PasteboardFetch() = default;

void PasteboardFetch::start() {
    m_transfer = m_owner.askForTargets();
    if (!m_transfer)
        takeTargets(m_owner.targets(nullptr));
}

void PasteboardFetch::proceed() {
    if (!isRunning() || !m_transfer || m_transfer->isRunning())
        return;
    const std::unique_ptr<PasteboardTransfer> ended = std::move(m_transfer);
    if (m_stage == Stage::targets) {
        takeTargets(m_owner.targets(ended.get()));
        return;
    }
    std::optional<Received> received = m_owner.received(m_current, *ended);
    if (m_stage == Stage::secret) {
        if (received)
            takeSecret(std::move(*received));
        m_stage = Stage::finished;
        return;
    }
    if (received)
        takeContents(std::move(*received));
    advance();
}

void PasteboardFetch::takeTargets(const QList<QByteArray> &targets) {
    bool isConcealed = false;
    for (const QByteArray &target : targets) {
        if (target.isEmpty() || isProtocolTarget(target))
            continue;
        m_targets.append(target);
        m_listed.insert(target);
        isConcealed = isConcealed || isConcealedTarget(target);
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

void PasteboardFetch::takeContents(Received received) {
    if (received.bytes.isEmpty())
        return; // that is how some toolkits say no
    // Programs give one text under five names. Equal bytes are held and counted once.
    for (const Received &other : m_received) {
        if (other.bytes == received.bytes) {
            received.bytes = other.bytes;
            m_receivedBytes -= received.bytes.size();
            break;
        }
    }
    m_receivedBytes += received.bytes.size();
    m_received.push_back(std::move(received));
}

void PasteboardFetch::takeSecret(Received received) {
    const auto encoding = m_owner.encodingOf(received);
    if (encoding && received.format == 8)
        m_secrets.remember(received.bytes, *encoding);
    wipe(received.bytes);
}

void PasteboardFetch::makeOthersFrom(const Received &best, bool (*isForm)(const QByteArray &)) {
    for (const QByteArray &target : std::as_const(m_targets)) {
        if (!isForm(target) || m_asked.contains(target))
            continue;
        m_asked.insert(target);
        m_siblings.push_back({target, best.bytes});
    }
}

void PasteboardFetch::conceal() {
    for (Received &received : m_received)
        wipe(received.bytes);
    m_received.clear();
    m_isConcealed = true;
    m_contents.types.append(QLatin1String(pasteboardType::concealed));
    m_stage = Stage::finished;
    publish();
}

void PasteboardFetch::advance() {
    if (m_stage == Stage::text)
        advanceText();
    if (m_stage == Stage::image)
        advanceImage();
    if (m_stage == Stage::files)
        advanceFiles();
    if (m_stage == Stage::rest)
        advanceRest();
}

void PasteboardFetch::advanceText() {
    if (m_transfer)
        return;
    if (const Received *got = find(m_current); got && got->format == 8) {
        const auto encoding = m_owner.encodingOf(*got);
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

void PasteboardFetch::advanceImage() {
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

void PasteboardFetch::advanceFiles() {
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

void PasteboardFetch::onImageFile(std::optional<QByteArray> bytes) {
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

void PasteboardFetch::advanceRest() {
    if (m_transfer)
        return;
    const bool hasRoom = m_receivedBytes < m_limits.changeBytes;
    if (const auto next = hasRoom ? nextWanted(m_targets) : std::nullopt)
        ask(*next);
    else
        m_stage = Stage::finished;
}

void PasteboardFetch::ask(const QByteArray &target) {
    ask(target, std::min(m_limits.transferBytes, m_limits.changeBytes - m_receivedBytes));
}

void PasteboardFetch::ask(const QByteArray &target, qsizetype maxBytes) {
    m_current = target;
    m_asked.insert(target);
    m_transfer = m_owner.ask(target, std::max<qsizetype>(maxBytes, 0));
}

void PasteboardFetch::publish() {
    if (m_stage != Stage::finished)
        m_stage = Stage::rest;
    if (m_isPublished)
        return;
    m_isPublished = true;
    if (m_hasOwnerEnded && !m_isConcealed)
        m_contents.types = receivedTypes();
    m_phaseStart = std::chrono::steady_clock::now();
    m_hooks.onReadable(m_contents);
}

QStringList PasteboardFetch::receivedTypes() const {
    QList<QByteArray> targets;
    for (const Received &received : m_received)
        targets.append(received.target);
    for (const selection::Sibling &sibling : m_siblings)
        targets.append(sibling.target);
    return pasteboardTypesOf(targets);
}

void PasteboardFetch::giveUp() {
    m_stage = Stage::finished;
    publish();
}

void PasteboardFetch::ownerEnded() {
    if (!isRunning())
        return;
    m_hasOwnerEnded = true; // nobody is asked for anything more
    if (m_transfer)
        m_transfer->ownerEnded();
    proceed();
    if (m_stage != Stage::imageFile)
        giveUp();
}

std::optional<PasteboardFetch::TimePoint> PasteboardFetch::deadline() const {
    if (!isRunning())
        return std::nullopt;
    return std::max(patienceEnd(), m_lastChance.value_or(TimePoint::min()));
}

PasteboardFetch::TimePoint PasteboardFetch::patienceEnd() const {
    const TimePoint total = m_phaseStart + m_limits.total;
    if (!m_transfer)
        return total;
    if (m_transfer->hasBegun())
        return std::min(total, m_transfer->lastProgress() + m_limits.stall);
    const int questions = mayBeAskedAgain() ? m_transfer->questions() : maxQuestions;
    const auto patience = questions == 1   ? std::min(m_limits.askAgain, m_limits.answer / 2)
                          : questions == 2 ? m_limits.answer / 2
                                           : m_limits.answer;
    return std::min(total, m_transfer->lastProgress() + patience);
}

bool PasteboardFetch::mayBeAskedAgain() const {
    const bool costsNoWork = m_stage == Stage::targets || m_stage == Stage::text || m_stage == Stage::files;
    return costsNoWork && m_transfer->mayBeAskedAgain();
}

void PasteboardFetch::expire(TimePoint now) {
    const auto due = deadline();
    if (!due || *due > now)
        return;
    if (m_stage == Stage::imageFile)
        onImageFile(std::nullopt); // a slow file system, which is not the owner's doing
    else if (m_transfer && !m_transfer->hasBegun() && mayBeAskedAgain() && m_transfer->questions() < maxQuestions &&
             now < m_phaseStart + m_limits.total)
        m_transfer->askAgain();
    else if (m_transfer && m_lastChance.value_or(TimePoint::min()) < patienceEnd())
        m_lastChance = now + m_limits.lastChance;
    else
        giveUp();
}

std::optional<QByteArray> PasteboardFetch::nextWanted(const QList<QByteArray> &candidates) const {
    const auto isWanted = [this](const QByteArray &target) {
        return !m_hasOwnerEnded && m_listed.contains(target) && !m_asked.contains(target);
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

const Received *PasteboardFetch::find(const QByteArray &target) const {
    const auto found = std::find_if(m_received.begin(), m_received.end(),
                                    [&](const Received &received) { return received.target == target; });
    return found != m_received.end() ? &*found : nullptr;
}

} // namespace tavrine
