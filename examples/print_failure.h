/* SPDX-License-Identifier: Apache-2.0 */
#ifndef PRINT_FAILURE_H
#define PRINT_FAILURE_H

#include <hcy/hcyclient.h>
#include <stdio.h>
#include <string.h>

/* Prints the error record of the last failed call. */
static void printFailure(const hcyClientRuntime* runtime, const hcyClientContext* context) {
  hcyErrorInfo info;
  runtime->getLastErrorInfo(context, &info);
  switch (info.kind) {
    case HCY_HTTP_ERROR: {
      const char* reason = info.details.http.statusMessage; /* with its line end */
      printf("HTTP status %u %.*s\n", (unsigned)info.details.http.statusCode,
             (int)strcspn(reason, "\r\n"), reason);
      break;
    }
    case HCY_VORTEN_ERROR:
      printf("%s: %s\n", info.details.vorten.identifier, info.details.vorten.message);
      for (size_t i = 0; info.details.vorten.stack != NULL && i < info.details.vorten.stackDepth;
           ++i) {
        const hcyErrorStackFrame* frame = &info.details.vorten.stack[i];
        printf("  in %s, %s, line %d\n", frame->name, frame->file, (int)frame->line);
      }
      break;
    default:
      printf("%s\n", info.details.generic.details);
  }
  runtime->destroyLastErrorInfo(&info);
}

#endif
