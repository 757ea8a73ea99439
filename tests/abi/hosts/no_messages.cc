// SPDX-License-Identifier: Apache-2.0

#include "host_messages.h"

bool ownMessagesWork() { return true; }
