// Tells what a program has in the X server: one line of a kind and how many, for all its connections
// together.
//     quorvel-x-resources PID

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace {

struct Free
{
    void operator()(void *memory) const { free(memory); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Free>;

std::vector<uint32_t> clientsOf(xcb_connection_t *connection, uint32_t process)
{
    const xcb_res_client_id_spec_t all{0, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const Owned<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection, xcb_res_query_client_ids(connection, 1, &all), nullptr));
    std::vector<uint32_t> clients;
    if (!reply)
        return clients;
    for (auto each = xcb_res_query_client_ids_ids_iterator(reply.get()); each.rem > 0;
         xcb_res_client_id_value_next(&each)) {
        if (xcb_res_client_id_value_value_length(each.data) > 0 &&
            *xcb_res_client_id_value_value(each.data) == process)
            clients.push_back(each.data->spec.client);
    }
    return clients;
}

std::string nameOf(xcb_connection_t *connection, xcb_atom_t atom)
{
    const Owned<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
    if (!reply)
        return std::to_string(atom);
    return {xcb_get_atom_name_name(reply.get()), size_t(xcb_get_atom_name_name_length(reply.get()))};
}

void add(std::map<std::string, unsigned> &counts, xcb_connection_t *connection, uint32_t client)
{
    const Owned<xcb_res_query_client_resources_reply_t> reply(xcb_res_query_client_resources_reply(
        connection, xcb_res_query_client_resources(connection, client), nullptr));
    if (!reply)
        return;
    const auto *types = xcb_res_query_client_resources_types(reply.get());
    for (int number = 0; number < xcb_res_query_client_resources_types_length(reply.get()); ++number)
        counts[nameOf(connection, types[number].resource_type)] += types[number].count;
    const Owned<xcb_res_query_client_pixmap_bytes_reply_t> pixmaps(xcb_res_query_client_pixmap_bytes_reply(
        connection, xcb_res_query_client_pixmap_bytes(connection, client), nullptr));
    if (pixmaps)
        counts["bytes of pixmaps"] += pixmaps->bytes;
}

} // namespace

int main(int count, char **words)
{
    auto *connection = xcb_connect(nullptr, nullptr);
    if (count != 2 || xcb_connection_has_error(connection)) {
        fprintf(stderr, "usage: %s PID, with DISPLAY set to an X server\n", words[0]);
        return 2;
    }
    const Owned<xcb_res_query_version_reply_t> version(
        xcb_res_query_version_reply(connection, xcb_res_query_version(connection, 1, 2), nullptr));
    std::map<std::string, unsigned> counts;
    for (const auto client : clientsOf(connection, uint32_t(strtoul(words[1], nullptr, 10)))) {
        ++counts["connections"];
        add(counts, connection, client);
    }
    for (const auto &[kind, number] : counts)
        printf("%s %u\n", kind.c_str(), number);
    xcb_disconnect(connection);
    return counts.empty() ? 1 : 0;
}
