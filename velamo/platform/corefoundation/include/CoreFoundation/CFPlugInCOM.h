/* The shape of plug-in interfaces: an instance begins with a pointer to a table of functions whose first slots are
   these. */
#ifndef VELAMO_CFPLUGINCOM_H
#define VELAMO_CFPLUGINCOM_H

#include <CoreFoundation/CFPlugIn.h>

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void* LPVOID;
typedef CFUUIDBytes REFIID;

#define S_OK ((HRESULT)0L)
#define E_NOINTERFACE ((HRESULT)0x80000004L)

#define STDMETHODCALLTYPE

#define IUNKNOWN_C_GUTS                                                                     \
    void* _reserved;                                                                        \
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(void* thisPointer, REFIID iid, LPVOID* ppv); \
    ULONG(STDMETHODCALLTYPE* AddRef)(void* thisPointer);                                    \
    ULONG(STDMETHODCALLTYPE* Release)(void* thisPointer)

#define IUnknownUUID                                                                                                \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x00, \
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

#endif
