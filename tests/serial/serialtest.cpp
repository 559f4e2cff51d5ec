#include "serialtest.h"

testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new TestEnvironment);
