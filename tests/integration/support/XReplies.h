// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace spotwell
{

/// xcb's replies are the caller's to free.
struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, FreeReply>;

inline xcb_atom_t atomOf(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

inline Owned<xcb_get_property_reply_t> propertyOf(xcb_connection_t* connection, xcb_window_t window,
                                                  xcb_atom_t property)
{
    constexpr std::uint32_t words = 64;
    const auto cookie =
        xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, words);
    return Owned<xcb_get_property_reply_t>(xcb_get_property_reply(connection, cookie, nullptr));
}

/// As long as the reply is there.
inline std::string_view bytesOf(const xcb_get_property_reply_t& property)
{
    return {static_cast<const char*>(xcb_get_property_value(&property)),
            static_cast<std::size_t>(xcb_get_property_value_length(&property))};
}

} // namespace spotwell
