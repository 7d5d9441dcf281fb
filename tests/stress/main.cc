#include "support/run_seeded.h"

int main(int argc, char** argv) { return corvane_test::RunSeeded(argc, argv); }
