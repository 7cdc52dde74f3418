// What a process holds in the X server, all its connections together: "KIND COUNT" a line, and the bytes of its
// pixmaps.
//
// usage: x_resources PROCESS
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <xcb/res.h>
#include <xcb/xcb.h>

namespace {

struct Free {
    void operator()(void *pointer) const { std::free(pointer); }
};
template <class T>
std::unique_ptr<T, Free> owned(T *reply) {
    return std::unique_ptr<T, Free>(reply);
}

std::vector<std::uint32_t> clients(xcb_connection_t *server) {
    std::vector<std::uint32_t> bases;
    const auto reply = owned(xcb_res_query_clients_reply(server, xcb_res_query_clients(server), nullptr));
    if (!reply)
        return bases;
    for (auto each = xcb_res_query_clients_clients_iterator(reply.get()); each.rem > 0; xcb_res_client_next(&each))
        bases.push_back(each.data->resource_base);
    return bases;
}

std::uint32_t processOf(xcb_connection_t *server, std::uint32_t client) {
    const xcb_res_client_id_spec_t question{client, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto reply =
        owned(xcb_res_query_client_ids_reply(server, xcb_res_query_client_ids(server, 1, &question), nullptr));
    if (!reply)
        return 0;
    const auto first = xcb_res_query_client_ids_ids_iterator(reply.get());
    return first.rem > 0 && xcb_res_client_id_value_value_length(first.data) > 0
               ? *xcb_res_client_id_value_value(first.data)
               : 0;
}

std::string nameOf(xcb_connection_t *server, xcb_atom_t atom) {
    const auto reply = owned(xcb_get_atom_name_reply(server, xcb_get_atom_name(server, atom), nullptr));
    return reply ? std::string(xcb_get_atom_name_name(reply.get()),
                               static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())))
                 : std::string();
}

} // namespace

int main(int count, char **arguments) {
    if (count != 2)
        return 2;
    const auto process = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    xcb_connection_t *server = xcb_connect(nullptr, nullptr);
    std::map<std::string, std::uint64_t> kinds;
    for (const std::uint32_t client : clients(server)) {
        if (processOf(server, client) != process)
            continue;
        ++kinds["connections"];
        const auto reply = owned(
            xcb_res_query_client_resources_reply(server, xcb_res_query_client_resources(server, client), nullptr));
        if (!reply)
            continue;
        for (auto each = xcb_res_query_client_resources_types_iterator(reply.get()); each.rem > 0;
             xcb_res_type_next(&each))
            kinds[nameOf(server, each.data->resource_type)] += each.data->count;
        const auto bytes = owned(xcb_res_query_client_pixmap_bytes_reply(
            server, xcb_res_query_client_pixmap_bytes(server, client), nullptr));
        if (bytes)
            kinds["PIXMAP BYTES"] += bytes->bytes + (std::uint64_t{bytes->bytes_overflow} << 32);
    }
    for (const auto &[kind, number] : kinds)
        std::printf("%s\t%llu\n", kind.c_str(), static_cast<unsigned long long>(number));
    xcb_disconnect(server);
    return kinds.empty() ? 1 : 0;
}
