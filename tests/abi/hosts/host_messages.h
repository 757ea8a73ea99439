// SPDX-License-Identifier: Apache-2.0

#pragma once

// Whether the messages that the host has of its own, if any, can be written and read.
bool ownMessagesWork();
