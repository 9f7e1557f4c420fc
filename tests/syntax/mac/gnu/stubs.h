// glibc chooses another file by the processor, which is not the one that its headers are installed for.
