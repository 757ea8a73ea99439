// SPDX-License-Identifier: Apache-2.0
//
// Exceptions that leave the library, as a program that knows only the standard types sees them.

#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <typeinfo>

namespace hcy::abi {

template <class Call>
void expectPositiveOverflow(Call call) {
  try {
    call();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::bad_cast& failure) {
    EXPECT_STREQ(failure.what(), "bad numeric conversion: positive overflow");
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "not a std::bad_cast: " << failure.what();
  }
}

}  // namespace hcy::abi
