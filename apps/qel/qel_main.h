// The qel command as a function: main() calls it once; the argument fuzzer
// calls it over and over in one process.
#ifndef QEL_APPS_QEL_MAIN_H
#define QEL_APPS_QEL_MAIN_H

/// Runs qel with \p argv (argv[0] is the program name) and returns its exit
/// status: 0, 1 when the command failed, 2 for bad input.
int qelMain(int argc, char **argv);

#endif
