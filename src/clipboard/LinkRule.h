#pragma once

#include "clipboard/ClipboardItem.h"

namespace tavrine {

/// True when the item counts as a link: a text of one word without "@" that is an address with a scheme, or that is one
/// with a dot in its host once "https://" stands before it.
///
/// What is an address follows RFC 3986, strictly: no character that had to be escaped, no port above 65535. Host names
/// are held to what names in the network are made of, which is less than RFC 3986 has room for: letters, digits, "-"
/// inside, "_", and no empty part, so that neither "a.b,c" nor "f(x).y" is a link. Letters beyond ASCII are allowed. So
/// "foo:bar", "c:/x" and "hello:" are links, for each has a scheme; "C:\x" is none, for a backslash is no part of an
/// address; "12:30" and "1234" are none, for there is no dot in the host as it is written, though a number can name a
/// host.
[[nodiscard]] bool isLink(const ClipboardItem &item);

} // namespace tavrine
