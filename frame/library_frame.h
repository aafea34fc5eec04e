// The chief header of the library: what every class file includes.
#pragma once

#include "typelib.h"
#include "values.h"
#include "errors.h"
#include "dispatch.h"
#include "events.h"
#include "object.h"
#include "catalogue.h"
#include "string_lists.h"
