// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Nothing of its own: stands for the precompiled headers of the tests.
