# What README.md does with the logs of the example session. DocumentationTest.cpp runs each region in a
# folder that holds them.

# [crash-log]
cat crash-*.xml
# [crash-log]

# [whole]
xmllint --noout *.xml && echo whole
# [whole]

# [calls]
grep -o '<[A-Za-z]* call_num="[0-9]*"' crash-*.xml | tail -n 4
# [calls]

# [failed]
xmllint --xpath '/*/*[return != "CADI_STATUS_OK"]/@call_num' run-*.xml
# [failed]

# [one-call]
xmllint --xpath '/*/*[@call_num = 29]' run-*.xml
# [one-call]

# [one-register]
xmllint --xpath '/*/CADIRegRead/reg/a0/bytes' run-*.xml
# [one-register]

# [not-returned]
xmllint --xpath '/*/*[@call_num][not(@call_num = /*/*/return_time/../@call_num)]' crash-*.xml
# [not-returned]

# [stream]
xmllint --stream --noout run-*.xml && echo whole
# [stream]

# [recover]
head -n 900 crash-*.xml >cut.xml
xmllint --recover cut.xml 2>errors | tail -n 6
# [recover]
