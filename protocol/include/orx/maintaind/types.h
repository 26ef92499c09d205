// Everything of the maintenance records: enumerations, the member-list machinery and all records.
#pragma once

#include "orx/maintaind/app.h"
#include "orx/maintaind/common.h"
#include "orx/maintaind/enums.h"
#include "orx/maintaind/event.h"
#include "orx/maintaind/field.h"
#include "orx/maintaind/latency.h"
#include "orx/maintaind/method.h"
#include "orx/maintaind/node.h"
#include "orx/maintaind/record.h"
