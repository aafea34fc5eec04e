#include "support.h"
using namespace test;
