// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

namespace spotwell::bench
{

// Answers of the web services, of `spots` spots each (10,800 at most), all different and the newest first, in
// the form that a real one has: some 20 keys an object from POTA, 15 from DXSummit, 12 cells a
// row on the WSPRnet page.

[[nodiscard]] QByteArray potaAnswer(int spots);
[[nodiscard]] QByteArray dxSummitAnswer(int spots);
[[nodiscard]] QByteArray wsprnetPage(int spots);

} // namespace spotwell::bench
