// The test library's headers, compiled once for all test programs.
