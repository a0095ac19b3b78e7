#include "disass/frmDisass.h"
#include "platform/ToolkitFactory.h"

int main(int argc, char** argv) {
  const auto pToolkit = platform::CreateToolkit(argc, argv);
  platform::SetToolkit(*pToolkit);
  frmDisass::LoadNew()->WindowForm().Show();
  pToolkit->Run();
  return 0;
}
