#include "adapters/x11/SelectionOwner.h"

#include <algorithm>
#include <cstring>

namespace tavrine {
namespace {

constexpr int maxMultiple = 256; // conversions in one request
constexpr size_t maxWaiting = 64;

} // namespace

SelectionOwner::SelectionOwner(XConnection &connection, const SelectionLimits &limits,
                               std::function<void(Order, Recipe)> make)
    : m_connection(connection), m_limits(limits), m_make(std::move(make)) {}

qsizetype SelectionOwner::pieceBytes() const {
    return std::min(m_limits.pieceBytes, m_connection.maxRequestBytes()) & ~qsizetype{3};
}

void SelectionOwner::own(std::vector<OfferedForm> forms, xcb_timestamp_t time) {
    release();
    m_isOwner = true;
    m_time = time;
    for (OfferedForm &form : forms) {
        const xcb_atom_t type = form.typeNumber != 0 ? form.typeNumber : m_connection.atom(form.type);
        m_offers.push_back({m_connection.atom(form.target), type, form.format, std::move(form.bytes),
                            std::move(form.recipe), form.isKept});
    }
}

void SelectionOwner::release() {
    for (const Waiting &waiting : std::exchange(m_waiting, {}))
        notify(waiting.request, XCB_ATOM_NONE);
    m_isOwner = false;
    ++m_ownership;
    m_offers.clear();
    m_underWay.clear();
    m_made.clear();
}

void SelectionOwner::onRequest(const xcb_selection_request_event_t &request) {
    if (!m_isOwner || request.selection != m_connection.atoms().clipboard ||
        request.requestor == m_connection.window()) {
        notify(request, XCB_ATOM_NONE);
        return;
    }
    Waiting waiting{request, neededFor(request)};
    if (isMade(waiting)) {
        answer(request);
        return;
    }
    if (m_waiting.size() >= maxWaiting) {
        notify(request, XCB_ATOM_NONE);
        return;
    }
    for (const xcb_atom_t target : waiting.needed) {
        if (!m_made.contains(target) && m_underWay.insert(target).second)
            m_make({m_ownership, target}, find(target)->recipe);
    }
    m_waiting.push_back(std::move(waiting));
}

SelectionOwner::Offer *SelectionOwner::find(xcb_atom_t target) {
    const auto found =
        std::find_if(m_offers.begin(), m_offers.end(), [target](const Offer &offer) { return offer.target == target; });
    return found != m_offers.end() ? &*found : nullptr;
}

std::set<xcb_atom_t> SelectionOwner::neededFor(const xcb_selection_request_event_t &request) {
    std::set<xcb_atom_t> needed;
    const auto consider = [&](xcb_atom_t target) {
        if (const Offer *offer = find(target); offer && offer->recipe)
            needed.insert(target);
    };
    consider(request.target);
    if (request.target == m_connection.atoms().multiple && request.property) {
        const auto pairs = pairsOf(request.requestor, request.property);
        for (const auto &[target, into] : pairs.value_or(QList<std::pair<xcb_atom_t, xcb_atom_t>>()))
            consider(target);
    }
    return needed;
}

bool SelectionOwner::isMade(const Waiting &waiting) {
    return std::all_of(waiting.needed.begin(), waiting.needed.end(), [this](xcb_atom_t target) {
        const Offer *offer = find(target);
        return !offer || !offer->recipe || m_made.contains(target);
    });
}

void SelectionOwner::onMade(Order order, const QByteArray &bytes) {
    if (order.ownership != m_ownership)
        return; // replaced meanwhile
    m_underWay.erase(order.target);
    Offer *const offer = find(order.target);
    if (!offer)
        return;
    if (bytes.isEmpty()) {
        std::erase_if(m_offers, [&](const Offer &other) { return other.target == order.target; });
    } else if (offer->isKept) {
        offer->bytes = bytes;
        offer->recipe = {};
    } else {
        m_made[order.target] = bytes;
    }
    std::vector<Waiting> still;
    for (Waiting &waiting : std::exchange(m_waiting, {})) {
        if (isMade(waiting))
            answer(waiting.request);
        else
            still.push_back(std::move(waiting));
    }
    m_waiting = std::move(still);
    std::erase_if(m_made, [this](const auto &made) {
        return std::none_of(m_waiting.begin(), m_waiting.end(),
                            [&](const Waiting &waiting) { return waiting.needed.contains(made.first); });
    });
}

void SelectionOwner::answer(const xcb_selection_request_event_t &request) {
    // Clients from before the conventions name no property and expect the target's name.
    const xcb_atom_t property = request.property ? request.property : request.target;
    const bool isMultiple = request.target == m_connection.atoms().multiple;
    const bool isAnswered = isMultiple ? request.property && convertMultiple(request.requestor, request.property)
                                       : convert(request.requestor, request.target, property);
    notify(request, isAnswered ? property : xcb_atom_t{XCB_ATOM_NONE});
}

bool SelectionOwner::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property) {
    const SelectionAtoms &atoms = m_connection.atoms();
    const auto words = [](const std::vector<uint32_t> &values) {
        return QByteArray(reinterpret_cast<const char *>(values.data()), static_cast<qsizetype>(values.size() * 4));
    };
    if (target == atoms.targets) {
        std::vector<uint32_t> list{atoms.targets, atoms.multiple, atoms.timestamp, atoms.saveTargets};
        for (const Offer &offer : m_offers)
            list.push_back(offer.target);
        return put(requestor, property, XCB_ATOM_ATOM, 32, words(list));
    }
    if (target == atoms.timestamp)
        return put(requestor, property, XCB_ATOM_INTEGER, 32, words({m_time}));
    if (target == atoms.saveTargets) // to list it says that we hand over at our end; asked for, it does nothing
        return put(requestor, property, atoms.null, 32, {});
    const Offer *offer = find(target);
    if (!offer)
        return false;
    const auto made = m_made.find(target);
    if (offer->recipe && made == m_made.end())
        return false; // asked for within a MULTIPLE that was changed under our eyes
    return put(requestor, property, offer->type, offer->format, offer->recipe ? made->second : offer->bytes);
}

std::optional<QList<std::pair<xcb_atom_t, xcb_atom_t>>> SelectionOwner::pairsOf(xcb_window_t requestor,
                                                                                xcb_atom_t property) const {
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), 0, requestor, property, XCB_ATOM_ANY, 0, maxMultiple * 2), nullptr));
    if (!reply || reply->format != 32)
        return std::nullopt;
    const QByteArrayView bytes(static_cast<const char *>(xcb_get_property_value(reply.get())),
                               xcb_get_property_value_length(reply.get()));
    return selection::parseAtomPairs(bytes, maxMultiple);
}

bool SelectionOwner::convertMultiple(xcb_window_t requestor, xcb_atom_t property) {
    auto pairs = pairsOf(requestor, property);
    if (!pairs)
        return false;
    for (auto &[target, into] : *pairs) {
        const bool isAnswered = target != m_connection.atoms().multiple && into != 0 && into != property &&
                                convert(requestor, target, into);
        if (!isAnswered)
            into = XCB_ATOM_NONE; // ICCCM: a pair that failed loses its property
    }
    std::vector<uint32_t> list;
    for (const auto &[target, into] : *pairs) {
        list.push_back(target);
        list.push_back(into);
    }
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, requestor, property, m_connection.atoms().atomPair,
                        32, static_cast<uint32_t>(list.size()), list.data());
    return true;
}

bool SelectionOwner::put(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format,
                         const QByteArray &bytes) {
    if (bytes.size() <= pieceBytes()) {
        putWhole(requestor, property, type, format, bytes);
        return true;
    }
    const auto isSame = [=](const Outgoing &o) { return o.requestor == requestor && o.property == property; };
    std::erase_if(m_outgoing, isSame); // asked for anew: the old one is not wanted any more
    if (m_outgoing.size() >= static_cast<size_t>(m_limits.outgoingTransfers))
        return false;
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    // Checked: a window that is gone already would never tell that it goes, and hold its place until the deadline.
    const XcbReply<xcb_generic_error_t> error(
        xcb_request_check(m_connection.get(), xcb_change_window_attributes_checked(m_connection.get(), requestor,
                                                                                   XCB_CW_EVENT_MASK, &mask)));
    if (error)
        return false;
    const auto size = static_cast<uint32_t>(bytes.size());
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, requestor, property, m_connection.atoms().incr, 32,
                        1, &size);
    m_outgoing.push_back({requestor, property, type, format, bytes, 0, std::chrono::steady_clock::now()});
    return true;
}

void SelectionOwner::putWhole(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, int format,
                              QByteArrayView bytes) {
    const int unit = format == 16 || format == 32 ? format : 8;
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, requestor, property, type,
                        static_cast<uint8_t>(unit), static_cast<uint32_t>(bytes.size() / (unit / 8)), bytes.data());
}

void SelectionOwner::notify(const xcb_selection_request_event_t &request, xcb_atom_t property) {
    char event[32] = {}; // the protocol sends 32 bytes, and the structure is shorter
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    notice.property = property;
    std::memcpy(event, &notice, sizeof notice);
    xcb_send_event(m_connection.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event);
}

void SelectionOwner::onPropertyNotify(const xcb_property_notify_event_t &event) {
    if (event.state != XCB_PROPERTY_DELETE)
        return;
    const auto found = std::find_if(m_outgoing.begin(), m_outgoing.end(), [&](const Outgoing &o) {
        return o.requestor == event.window && o.property == event.atom;
    });
    if (found == m_outgoing.end())
        return;
    const QByteArrayView piece =
        QByteArrayView(found->bytes).sliced(found->offset, std::min(pieceBytes(), found->bytes.size() - found->offset));
    putWhole(found->requestor, found->property, found->type, found->format, piece);
    found->offset += piece.size();
    found->lastProgress = std::chrono::steady_clock::now();
    if (piece.isEmpty()) { // that was the end mark
        m_outgoing.erase(found);
        stopWatching(event.window);
    }
}

void SelectionOwner::onWindowDestroyed(xcb_window_t window) {
    std::erase_if(m_outgoing, [window](const Outgoing &o) { return o.requestor == window; });
}

void SelectionOwner::stopWatching(xcb_window_t requestor) {
    if (std::any_of(m_outgoing.begin(), m_outgoing.end(), [=](const Outgoing &o) { return o.requestor == requestor; }))
        return;
    const uint32_t mask = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(m_connection.get(), requestor, XCB_CW_EVENT_MASK, &mask);
}

std::optional<SelectionOwner::TimePoint> SelectionOwner::deadline() const {
    std::optional<TimePoint> first;
    for (const Outgoing &outgoing : m_outgoing) {
        const TimePoint due = outgoing.lastProgress + m_limits.outgoingStall;
        first = std::min(first.value_or(due), due);
    }
    return first;
}

void SelectionOwner::expire(TimePoint now) {
    for (size_t i = 0; i < m_outgoing.size();) {
        const xcb_window_t requestor = m_outgoing[i].requestor;
        if (m_outgoing[i].lastProgress + m_limits.outgoingStall > now) {
            ++i;
            continue;
        }
        m_outgoing.erase(m_outgoing.begin() + static_cast<std::ptrdiff_t>(i));
        stopWatching(requestor);
    }
}

} // namespace tavrine
