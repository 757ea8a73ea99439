// SPDX-License-Identifier: Apache-2.0
//
// Exceptions that leave the library, as a program that knows only the standard types sees them.

#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <typeinfo>

namespace hcy::test {

// Fails the test unless the call throws an exception of this kind with this text.
template <class Expected, class Call>
void expectFailure(Call call, const char* text) {
  try {
    call();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const Expected& failure) {
    EXPECT_STREQ(failure.what(), text);
  } catch (const std::exception& failure) {
    ADD_FAILURE() << "another exception: " << failure.what();
  }
}

template <class Call>
void expectPositiveOverflow(Call call) {
  expectFailure<std::bad_cast>(call, "bad numeric conversion: positive overflow");
}

// Of a type that the library has no class for.
template <class Call>
void expectUnserved(Call call) {
  expectFailure<std::invalid_argument>(call, "dispatch_on_QXType");
}

}  // namespace hcy::test
