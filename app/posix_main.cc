#include "app/program.h"

int main(int argc, char** argv) { return RunEpgshell(argc, argv); }
