tokwatch_test(PriceTableTests
  SOURCES PriceTableTests.cpp
  LINK TokwatchStore)
tokwatch_test(UsageSummaryTests
  SOURCES UsageSummaryTests.cpp UsageSummaryCodingTests.cpp
  LINK TokwatchStore)
