#include "runner/commands.h"

int main(int count, char** words) { return runner::Main(count, words); }
