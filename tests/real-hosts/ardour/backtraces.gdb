# Runs Ardour, and says where it is when it dies, or when it is interrupted because it hangs: three times, so that what
# hangs can be told from what only passes by.
set pagination off
set confirm off
set disable-randomization off
handle all nostop noprint pass
handle SIGSEGV SIGBUS SIGILL SIGFPE SIGABRT stop print
handle SIGINT stop print nopass
run
echo \n-- where it stopped\n
backtrace 100
echo \n-- all threads\n
thread apply all backtrace 30
continue
echo \n-- all threads\n
thread apply all backtrace 30
continue
echo \n-- all threads\n
thread apply all backtrace 30
kill
