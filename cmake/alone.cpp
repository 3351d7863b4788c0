// SPDX-License-Identifier: Apache-2.0
// Nothing: what is linked here is a room's archive, whole, to see that it needs no room above it.
