// Drawbot suites, held by plug-ins that draw custom UI. Their tables are opaque here:
// plug-ins of this tree acquire and release them but call none of their functions.
#pragma once

#define kDRAWBOT_DrawSuite "DRAWBOT Draw Suite"
#define kDRAWBOT_DrawSuite_Version1 1
#define kDRAWBOT_SupplierSuite "DRAWBOT Supplier Suite"
#define kDRAWBOT_SupplierSuite_Version1 1
#define kDRAWBOT_SurfaceSuite "DRAWBOT Surface Suite"
#define kDRAWBOT_SurfaceSuite_Version2 2
#define kDRAWBOT_PathSuite "DRAWBOT Path Suite"
#define kDRAWBOT_PathSuite_Version1 1

struct DRAWBOT_DrawbotSuite1;
struct DRAWBOT_SupplierSuite1;
struct DRAWBOT_SurfaceSuite2;
struct DRAWBOT_PathSuite1;

typedef struct DRAWBOT_Suites {
  DRAWBOT_DrawbotSuite1* drawbot_suiteP;
  DRAWBOT_SupplierSuite1* supplier_suiteP;
  DRAWBOT_SurfaceSuite2* surface_suiteP;
  DRAWBOT_PathSuite1* path_suiteP;
} DRAWBOT_Suites;
