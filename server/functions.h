// SPDX-License-Identifier: Apache-2.0
//
// The functions that the program hcy-local-server brings with it. An estimate of steps trusts
// nothing.

#pragma once

#include <vector>

#include "function_table.h"

namespace hcy::server {

std::vector<Function> ownFunctions();

void echo(Call& call);
void mathPlus(Call& call);
void linalgSolve(Call& call);
void linalgSvd(Call& call);
void statsLinearFit(Call& call);
void statsDescribe(Call& call);
void textUpper(Call& call);
void textSplit(Call& call);
void sparseMultiply(Call& call);
void demoFail(Call& call);
void demoSleep(Call& call);

double linalgSteps(const std::vector<Value>& inputs);
double sparseMultiplySteps(const std::vector<Value>& inputs);
double demoFailSteps(const std::vector<Value>& inputs);

}  // namespace hcy::server
