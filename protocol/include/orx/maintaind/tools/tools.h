// Everything of the maintenance daemon's tools-side interface: method ids, requests, entries and
// replies. The records encode with vorx::serialize and print with orx::maintaind::ToJson like the
// maintenance records.
#pragma once

#include "orx/maintaind/tools/check.h"
#include "orx/maintaind/tools/entries.h"
#include "orx/maintaind/tools/method_ids.h"
#include "orx/maintaind/tools/replies.h"
#include "orx/maintaind/tools/requests.h"
#include "orx/maintaind/tools/timeline.h"
