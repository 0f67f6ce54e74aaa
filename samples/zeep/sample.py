#!/usr/bin/python3
"""sample.py WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.

Status 1 when the message was not sent, or something else failed.
"""

import re
import sys

from requests.exceptions import RequestException
from zeep import Client
from zeep.exceptions import Error, Fault


def run(wsdl, pager, second=None):
    client = Client(wsdl)
    service = client.service
    # When the service is reached by another address than its description names:
    # service = client.create_service("{http://quorbel.example/soap}QuorbelSoap", "https://soap.plant.example/...")
    servers = {"szURL": pager, "szURL2": second}  # None leaves an element out

    text = service.SendStdMessage(
        **servers,
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
    # A message that could not be delivered is no fault: the text then is the transport's. The paging server names a job.
    job = re.search(r"job (\S+)", text or "")
    if not job:
        print("not sent:", (text or "").strip())
        return 1
    print("sent:", text.strip())

    answer = service.QueryMessage(**servers, szJobID=job[1])
    print("query:", answer.szResponseMessage)
    for line in answer.szResult.string if answer.szResult else []:
        print("  " + line)

    admin = {**servers, "szAdminName": "admin", "szAdminPassword": "secret"}
    added = service.AddGroup(**admin, szGroupName="night", szDescription="Night shift", bAlertOwner=True)
    print("added:", added.strip())

    try:
        service.DeleteGroup(szURL=pager, szAdminName="admin", szAdminPassword="", szGroupName="night")
    except Fault as fault:
        print("fault:", fault.message)
    return 0


try:
    sys.exit(run(*sys.argv[1:]))
except Fault as fault:
    sys.exit(f"fault: {fault.message}")
except (Error, RequestException) as error:
    sys.exit(f"no answer from the service: {error}")
