#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Store/UsageStore.h"
