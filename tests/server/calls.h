// SPDX-License-Identifier: Apache-2.0
//
// Calls of the server's functions with the wire messages themselves.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "hcy.client.VORTENArray.pb.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "support/local_server.h"

namespace hcy::test {

using client::VORTEN_Array;
using client::VORTEN_Params;
using client::VORTEN_Result;
using Dimensions = std::vector<std::uint64_t>;

VORTEN_Array doubles(const Dimensions& dimensions, const std::vector<double>& values);
VORTEN_Array complexDoubles(const Dimensions& dimensions, const std::vector<double>& real,
                            const std::vector<double>& imaginary);
VORTEN_Array scalar(double value);
// One row of UTF-16 code units.
VORTEN_Array chars(const std::u16string& text);
VORTEN_Array sparse(const Dimensions& dimensions, const std::vector<std::uint64_t>& columnStarts,
                    const std::vector<std::uint64_t>& rows, const std::vector<double>& values);

std::vector<double> realPart(const VORTEN_Array& array);
std::vector<double> imaginaryPart(const VORTEN_Array& array);
std::u16string textOf(const VORTEN_Array& array);
Dimensions dimensionsOf(const VORTEN_Array& array);
// The value of a field of an element of a struct array; fails the test if there is none.
const VORTEN_Array& field(const VORTEN_Array& array, int element, const std::string& name);

std::string serializedParams(int nargout, const std::vector<VORTEN_Array>& arguments);

// Fails the test unless the status is 200 and the body is a VORTEN_Result.
VORTEN_Result call(const ServerProcess& server, const std::string& path, int nargout,
                   const std::vector<VORTEN_Array>& arguments);

// The outputs; fails the test unless there are as many and no error.
std::vector<VORTEN_Array> outputs(const ServerProcess& server, const std::string& path, int nargout,
                                  const std::vector<VORTEN_Array>& arguments);

// The identifier of the error that is raised, or "no error". Fails the test unless the error has a
// message and one stack frame of that function.
std::string errorOf(const ServerProcess& server, const std::string& path, int nargout,
                    const std::vector<VORTEN_Array>& arguments);

// Fails the test if the array breaks the rules that all arrays of the server keep.
void expectWellFormed(const VORTEN_Array& array);

}  // namespace hcy::test
