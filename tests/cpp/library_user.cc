// SPDX-License-Identifier: Apache-2.0

#include "library_user.h"

#include <hcy/hcyclient.hpp>

void useALibrary() { const hcyclient::Library library; }
