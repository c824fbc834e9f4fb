/* What a unit is called with, for tests of whoever calls it: appended to the file that KS_PROBE_CALLS names, if any. */
#ifndef KS_TEST_UNITS_TELLING_H
#define KS_TEST_UNITS_TELLING_H

__attribute__((format(printf, 1, 2))) void tell(const char* format, ...);
/* What of its parent's the process has: open files, handlers of signals, standard input and output. */
void tellOfProcess(void);

#endif
