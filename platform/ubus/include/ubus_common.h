/* SPDX-License-Identifier: Apache-2.0 */
/* What client and broker have in common. */
#ifndef UBUS_COMMON_H
#define UBUS_COMMON_H

#define UBUS_UNIX_SOCKET "/var/run/ubus/ubus.sock" /* what a null path stands for */

#endif
