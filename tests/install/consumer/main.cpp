#include <Util/EditorUtil.h>

#include <iostream>

int main()
{
    std::cout << "EditorUtil " << EditorUtil::version().toStdString() << std::endl;
    return 0;
}
