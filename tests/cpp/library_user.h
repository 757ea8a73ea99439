// SPDX-License-Identifier: Apache-2.0

#pragma once

// Keeps a Library for as long as it runs, in a shared object of its own that hides its symbols.
__attribute__((visibility("default"))) void useALibrary();
