# What README.md does with the logs of the example session. DocumentationTest.cpp runs each region in a
# folder that holds them.

# [whole]
xmllint --noout *.xml && echo whole
# [whole]
