#!/usr/bin/python3
"""sample.py WSDL PAGING_SERVER: sends a message, asks about it, adds a group, and is refused once."""

import re
import sys

from zeep import Client
from zeep.exceptions import Fault

wsdl, pager = sys.argv[1:]
client = Client(wsdl)
service = client.service
# When the service is reached by another address than its description names:
# service = client.create_service("{http://quorbel.example/soap}QuorbelSoap", "https://soap.plant.example/...")

sent = service.SendStdMessage(
    szURL=pager,
    szRecipientName="oncall",
    nPriority=2,
    bTimeStamp=True,
    ResponseActionData=[
        {"szResponse": "1", "szAction": "ack", "bFinal": True},
        {"szResponse": "2", "szAction": "escalate", "bFinal": False},
    ],
    CustomFieldData=[{"szFieldName": "ticket", "szFieldValue": "T-7"}],
    szMessage='Pump 4 <hot> & "loud"',
    szSender="ops",
)
print("sent:", sent.strip())

job = re.search(r"job (\S+)", sent)[1]
answer = service.QueryMessage(szURL=pager, szJobID=job)
print("query:", answer.szResponseMessage)
for line in answer.szResult.string:
    print("  " + line)

admin = {"szURL": pager, "szAdminName": "admin", "szAdminPassword": "secret"}
added = service.AddGroup(**admin, szGroupName="night", szDescription="Night shift", bAlertOwner=True)
print("added:", added.strip())

try:
    service.DeleteGroup(szURL=pager, szAdminName="admin", szAdminPassword="", szGroupName="night")
except Fault as fault:
    print("fault:", fault.message)
