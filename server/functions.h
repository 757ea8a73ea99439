// SPDX-License-Identifier: Apache-2.0
//
// What the table calls. A function trusts that the number of inputs and of outputs is one that its
// row allows; all else it checks, and raises a FunctionError. An estimate of steps trusts nothing.

#pragma once

#include "function_table.h"

namespace hcy::server {

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

double linalgSteps(const Arrays& inputs);
double sparseMultiplySteps(const Arrays& inputs);
double demoFailSteps(const Arrays& inputs);

}  // namespace hcy::server
