#include "qel_main.h"

int main(int argc, char **argv) { return qelMain(argc, argv); }
