// IKsTopologyInfo, for the toolchains whose SDK headers lack vidcap.h. Included by platform/com.h
// and platform/portable_com.h only, behind the types it uses.
#pragma once

struct IKsTopologyInfo : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index,
                                                       KSTOPOLOGY_CONNECTION* connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node, WCHAR* name, DWORD size,
                                                 DWORD* nameLength) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) = 0;
};
