/**
 * @file annotations.h
 * What the other headers begin with: the system's header, and VOK_SAL, which puts an annotation of
 * `sal.h` on an argument. A system header that does not bring these annotations leaves the
 * arguments plain.
 */
#ifndef VOK_ANNOTATIONS_H
#define VOK_ANNOTATIONS_H

#include <windows.h>

#if defined(_In_opt_) && defined(_In_opt_z_) && defined(_In_reads_bytes_) && defined(_Inout_) && \
    defined(_Inout_opt_) && defined(_Out_writes_bytes_opt_)
#define VOK_SAL(annotation) annotation
#else
#define VOK_SAL(annotation)
#endif

#endif
